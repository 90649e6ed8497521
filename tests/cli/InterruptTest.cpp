#include "harness/Process.h"
#include "harness/Served.h"
#include "harness/TerminalCommand.h"
#include "harness/TextFile.h"

#include <operation/Interruption.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    TerminalCommand start(const std::vector<std::string>& form)
    {
        Variables variables = environment();
        variables.emplace_back("TMPDIR", local(""));
        return TerminalCommand(withCa(form), variables, local(""));
    }
};

} // namespace

TEST_F(Interrupt, LeavesAndNamesWhatADownloadHasFetched)
{
    writeFile(served("file"), std::string(4000, 'x'));
    serve({"2/DATA=stall-after:1000"});
    TerminalCommand command = start({"get", url("/file")});
    command.shownUpTo("1000 B of 3.9 KiB, 25 %");
    command.type("\x03");
    EXPECT_EQ(command.wait(), -SIGINT);
    EXPECT_NE(lastShown(command).find("\r\nget: 42 interrupted by SIGINT; file holds the first 1000 bytes\r\n"),
              std::string::npos)
        << command.shown();
    EXPECT_EQ(contentsOf(local("file")), std::string(1000, 'x'));
}

TEST_F(Interrupt, ByAnotherProcessIsTheSame)
{
    writeFile(served("file"), std::string(4000, 'x'));
    serve({"2/DATA=stall-after:1000"});
    TerminalCommand command = start({"get", url("/file"), "--json"});
    command.shownUpTo("1000 B of 3.9 KiB, 25 %");
    command.signal(SIGTERM);
    EXPECT_EQ(command.wait(), -SIGTERM);
    EXPECT_NE(command.shown().find("\"signal\":\"SIGTERM\""), std::string::npos) << command.shown();
}

TEST_F(Interrupt, LeavesTheLocalFileAloneBeforeTheDownload)
{
    writeFile(local("file"), "as it was");
    serve({"1/SIZE=stall"});
    TerminalCommand command = start({"get", url("/file"), "--trace"});
    command.shownUpTo("> SIZE file");
    command.type("\x03");
    EXPECT_EQ(command.wait(), -SIGINT);
    EXPECT_NE(command.shown().find("get: 42 interrupted by SIGINT; nothing was fetched\r\n"), std::string::npos)
        << command.shown();
    EXPECT_EQ(contentsOf(local("file")), "as it was");
}

TEST_F(Interrupt, RemovesTheTemporaryFileOfAListing)
{
    serve({"NLST=stall"});
    TerminalCommand command = start({"ls", url(), "--trace"});
    command.shownUpTo("> NLST");
    EXPECT_FALSE(std::filesystem::is_empty(local("")));
    command.type("\x03");
    EXPECT_EQ(command.wait(), -SIGINT);
    EXPECT_NE(command.shown().find("ls: 42 interrupted by SIGINT; nothing is left of it\r\n"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(local("")));
}

TEST_F(Interrupt, ByTheEndOfTheTerminalRemovesTheTemporaryFile)
{
    serve({"NLST=stall"});
    TerminalCommand command = start({"ls", url(), "--trace"});
    command.shownUpTo("> NLST");
    EXPECT_FALSE(std::filesystem::is_empty(local("")));
    command.signal(SIGHUP);
    EXPECT_EQ(command.wait(), -SIGHUP);
    EXPECT_NE(command.shown().find("ls: 42 interrupted by SIGHUP; nothing is left of it\r\n"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(local("")));
}

TEST_F(Interrupt, ByAHangUpThatIsIgnoredStaysIgnored)
{
    serve({"NLST=meet:2"});
    ProcessSetup setup;
    setup.words =
        withCa({"/bin/sh", "-c", "trap '' HUP; exec \"$0\" \"$@\"", SFTPCLIENT_COMMAND, "ls", url(), "--trace"});
    setup.environment = environment();
    setup.folder = local("");
    TerminalCommand command(setup);
    command.shownUpTo("> NLST");
    command.signal(SIGHUP);
    EXPECT_EQ(run({"ls", url()}).status, 0);
    EXPECT_EQ(command.wait(), 0) << command.shown();
}

// The line before a retry, which nobody reads.
TEST_F(Interrupt, ByAReaderThatLeftRemovesTheTemporaryFile)
{
    // It gets no further until the reader has left and another client has come.
    serve({"PASS=meet:2", "CWD=drop"});
    const std::string temporary = folder() + "/temporary";
    const std::string pipe = folder() + "/pipe";
    std::filesystem::create_directory(temporary);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ProcessSetup setup;
    setup.words = withCa({SFTPCLIENT_COMMAND, "ls", url("/weekly/"), "--retry=1", "--retry-delay=0"});
    setup.environment = environment();
    setup.environment.emplace_back("TMPDIR", temporary);
    setup.folder = local("");
    setup.out = "/dev/null";
    setup.err = pipe;
    Process command(setup);
    close(reader);
    EXPECT_EQ(run({"test", url()}).status, 0);
    EXPECT_EQ(command.wait(), -SIGPIPE);
    EXPECT_TRUE(std::filesystem::is_empty(temporary));
    EXPECT_EQ(sessions().size(), 2U);
}

TEST_F(Interrupt, SaysThatARenameMayHaveHappened)
{
    serve({"rename=stall"});
    TerminalCommand command = start({"mv", url(), "old", "new", "--trace"});
    command.shownUpTo("> rename /old /new");
    command.type("\x03");
    EXPECT_EQ(command.wait(), -SIGINT);
    EXPECT_NE(command.shown().find("mv: 42 interrupted by SIGINT; whether the server has carried it out is not known"),
              std::string::npos);
}

TEST_F(Interrupt, EndsTheCheckOfAnUpload)
{
    writeFile(local("file"), "contents");
    serve({"SIZE=stall"});
    TerminalCommand command = start({"put", "file", url(), "--trace"});
    command.shownUpTo("> SIZE file");
    command.type("\x03");
    EXPECT_EQ(command.wait(), -SIGINT);
    EXPECT_NE(command.shown().find("put: 42 interrupted by SIGINT; the server may hold up to 8 bytes of the file"),
              std::string::npos)
        << command.shown();
}

TEST_F(Interrupt, EndsTheWaitBeforeTryingAgain)
{
    serve({"GREETING=drop"});
    TerminalCommand command = start({"ls", url(), "--retry=1", "--retry-delay=3600"});
    command.shownUpTo("; trying again in 3600 s");
    command.type("\x03");
    EXPECT_EQ(command.wait(), -SIGINT);
    EXPECT_NE(command.shown().find("ls: 42 interrupted by SIGINT; "), std::string::npos);
    EXPECT_EQ(sessions().size(), 1U);
}

TEST(Interruption, LeavesTheSecondSignalToTheSystem)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        // This process may run in the background.
        auto* const before = std::signal(signal, SIG_DFL);
        {
            const Interruption interruption;
            static_cast<void>(std::raise(signal));
            EXPECT_EQ(Interruption::signal(), signal);
            EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << "the next one ends the process";
        }
        static_cast<void>(std::signal(signal, before));
    }
}

TEST(Interruption, OutlivesEveryLineThatNobodyReads)
{
    auto* const before = std::signal(SIGPIPE, SIG_DFL);
    {
        const Interruption interruption;
        static_cast<void>(std::raise(SIGPIPE));
        static_cast<void>(std::raise(SIGPIPE));
        EXPECT_EQ(Interruption::signal(), SIGPIPE);
    }
    EXPECT_EQ(std::signal(SIGPIPE, before), SIG_DFL);
}

TEST(Interruption, NamesItsSignals)
{
    EXPECT_STREQ(nameOfSignal(SIGINT), "SIGINT");
    EXPECT_STREQ(nameOfSignal(SIGTERM), "SIGTERM");
    EXPECT_STREQ(nameOfSignal(SIGHUP), "SIGHUP");
    EXPECT_STREQ(nameOfSignal(SIGPIPE), "SIGPIPE");
}
