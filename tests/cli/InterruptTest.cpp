#include "harness/Served.h"
#include "harness/TerminalCommand.h"

#include <operation/Interruption.h>

#include <csignal>
#include <filesystem>

namespace {

// What was shown after the last control sequence.
std::string lastShown(const TerminalCommand& command)
{
    const std::string shown = command.shown();
    const std::string::size_type cleared = shown.rfind("\r\x1b[K");
    return cleared == std::string::npos ? shown : shown.substr(cleared + 4);
}

class Interrupt : public Served
{
protected:
    Interrupt() { std::filesystem::create_directory(local("temporary")); }

    TerminalCommand start(const Words& form)
    {
        return TerminalCommand(setupOf(form, {{"TMPDIR", local("temporary")}}));
    }
};

/// The step at which a command is interrupted, its output, and what is left.
struct Interrupted
{
    const char* id;
    std::string fault;
    Words form; ///< a word that begins with "/" is a URL's path
    std::string shown;
    int signal;
    std::string result;
    std::size_t sessions;
    std::string kept = "as it was"; ///< of the local file "got"
};

void PrintTo(const Interrupted& interrupted, std::ostream* stream) { *stream << interrupted.id; }

class InterruptAt : public Interrupt, public testing::WithParamInterface<Interrupted>
{
protected:
    InterruptAt() { asHost = true; }
};

TEST_P(InterruptAt, ReportsWhatIsLeft)
{
    const Interrupted& at = GetParam();
    writeFile(served("file"), std::string(4000, 'x'));
    writeFile(local("file"), "contents");
    writeFile(local("got"), "as it was");
    serve({at.fault});
    Words form = at.form;
    for (std::string& word : form) {
        word = word.front() == '/' ? url(word) : word;
    }
    TerminalCommand command = start(form);
    command.shownUpTo(at.shown);
    if (at.fault == "NLST=stall") {
        EXPECT_FALSE(std::filesystem::is_empty(local("temporary")));
    }
    if (at.signal == SIGINT) {
        command.type("\x03");
    } else {
        command.signal(at.signal);
    }
    EXPECT_EQ(-at.signal, command.wait());
    EXPECT_TRUE(holds(at.result, lastShown(command))) << command.shown();
    EXPECT_EQ(at.kept, contentOf(local("got")));
    EXPECT_TRUE(std::filesystem::is_empty(local("temporary")));
    EXPECT_EQ(at.sessions, sessions().size());
}

const Interrupted kInterrupted[] = {
    {"Download",
     "2/DATA=stall-after:1000",
     {"get", "/file", "got"},
     "1000 B of 3.9 KiB, 25 %",
     SIGINT,
     "\r\nget: 42 interrupted by SIGINT; got holds the first 1000 bytes\r\n",
     2,
     std::string(1000, 'x')},
    {"DownloadByAnotherProcess",
     "2/DATA=stall-after:1000",
     {"get", "/file", "got", "--json"},
     "1000 B of 3.9 KiB, 25 %",
     SIGTERM,
     "\"signal\":\"SIGTERM\"",
     2,
     std::string(1000, 'x')},
    {"SizeCheck",
     "1/SIZE=stall",
     {"get", "/file", "got", "--trace"},
     "> SIZE file",
     SIGINT,
     "get: 42 interrupted by SIGINT; nothing was fetched\r\n",
     1},
    {"Listing",
     "NLST=stall",
     {"ls", "/", "--trace"},
     "> NLST",
     SIGINT,
     "ls: 42 interrupted by SIGINT; nothing is left of it\r\n",
     1},
    {"ListingByTheEndOfTheTerminal",
     "NLST=stall",
     {"ls", "/", "--trace"},
     "> NLST",
     SIGHUP,
     "ls: 42 interrupted by SIGHUP; nothing is left of it\r\n",
     1},
    {"Rename",
     "rename=stall",
     {"mv", "/", "old", "new", "--trace"},
     "> rename /old /new",
     SIGINT,
     "mv: 42 interrupted by SIGINT; whether the server has carried it out is not known",
     1},
    {"CheckOfAnUpload",
     "SIZE=stall",
     {"put", "file", "/", "--trace"},
     "> SIZE file",
     SIGINT,
     "put: 42 interrupted by SIGINT; the server may hold up to 8 bytes of the file",
     2},
    {"WaitBeforeTryingAgain",
     "GREETING=drop",
     {"ls", "/", "--retry=1", "--retry-delay=3600"},
     "; trying again in ",
     SIGINT,
     "ls: 42 interrupted by SIGINT; ",
     1},
};
INSTANTIATE_TEST_SUITE_P(Within, InterruptAt, testing::ValuesIn(kInterrupted),
                         [](const testing::TestParamInfo<Interrupted>& of) { return std::string(of.param.id); });

TEST_F(Interrupt, ByAnIgnoredHangUpHasNoEffect)
{
    serve({"NLST=meet:2"});
    ProcessSetup setup = setupOf({"ls", url(), "--trace"});
    setup.ignored = SIGHUP;
    TerminalCommand command(setup);
    command.shownUpTo("> NLST");
    command.signal(SIGHUP);
    EXPECT_TRUE(exited(0, run({"ls", url()})));
    EXPECT_EQ(0, command.wait()) << command.shown();
}

// The line before a retry, which nobody reads.
TEST_F(Interrupt, ByAClosedPipeRemovesTheTemporaryFile)
{
    // It gets no further until the reader has left and another client has come.
    serve({"PASS=meet:2", "CWD=drop"});
    Pipe pipe;
    ProcessSetup setup =
        setupOf({"ls", url("/weekly/"), "--retry=1", "--retry-delay=0"}, {{"TMPDIR", local("temporary")}});
    setup.out = "/dev/null";
    setup.err = pipe.writer();
    Process command(setup);
    pipe.closeWriter();
    pipe.closeReader();
    EXPECT_TRUE(exited(0, run({"test", url()})));
    EXPECT_EQ(-SIGPIPE, command.wait());
    EXPECT_TRUE(std::filesystem::is_empty(local("temporary")));
    EXPECT_EQ(2U, sessions().size());
}

TEST(Interruption, LeavesTheSecondSignalToTheSystem)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        // This process may run in the background.
        auto* const before = std::signal(signal, SIG_DFL);
        {
            const Interruption interruption;
            static_cast<void>(std::raise(signal));
            EXPECT_EQ(signal, Interruption::signal());
            EXPECT_EQ(SIG_DFL, std::signal(signal, SIG_DFL)) << "the next one ends the process";
        }
        static_cast<void>(std::signal(signal, before));
    }
}

TEST(Interruption, SurvivesOutputThatNobodyReads)
{
    auto* const before = std::signal(SIGPIPE, SIG_DFL);
    {
        const Interruption interruption;
        static_cast<void>(std::raise(SIGPIPE));
        static_cast<void>(std::raise(SIGPIPE));
        EXPECT_EQ(SIGPIPE, Interruption::signal());
    }
    EXPECT_EQ(SIG_DFL, std::signal(SIGPIPE, before));
}

TEST(Interruption, NamesItsSignals)
{
    EXPECT_EQ("SIGINT", nameOfSignal(SIGINT));
    EXPECT_EQ("SIGTERM", nameOfSignal(SIGTERM));
    EXPECT_EQ("SIGHUP", nameOfSignal(SIGHUP));
    EXPECT_EQ("SIGPIPE", nameOfSignal(SIGPIPE));
}

} // namespace
