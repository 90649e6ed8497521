// Output that cannot be delivered is a failure, reported before anything is sent if possible.
#include "harness/Served.h"

#include <sys/stat.h>

#include <filesystem>

namespace {

class NothingLost : public Served
{
protected:
    /// Runs a line of the shell in which $0 is the command.
    ProgramResult inShell(const std::string& line, const std::vector<std::string>& words) const
    {
        ProcessSetup setup = setupOf(words);
        setup.words.insert(setup.words.begin(), {"/bin/sh", "-c", line});
        return runProgram(setup);
    }
};

constexpr char kNotListed[] = "sftpclient: the listing cannot be written to standard output";
constexpr char kNoResult[] = "sftpclient: the result cannot be written to standard output";

} // namespace

TEST_F(NothingLost, OfAListingThatCannotBeWritten)
{
    writeFile(served("file"), "contents");
    serve();
    for (const std::string line : {"\"$0\" \"$@\" >&-", "\"$0\" \"$@\" > /dev/full"}) {
        SCOPED_TRACE(line);
        const ProgramResult names = inShell(line, {"ls", url()});
        EXPECT_TRUE(exited(255, names)) << line;
        EXPECT_EQ(kNotListed, lastLine(names.err)) << line;
        const ProgramResult object = inShell(line, {"test", url(), "--json"});
        EXPECT_TRUE(exited(255, object)) << line;
        EXPECT_EQ(kNoResult, lastLine(object.err)) << line;
        for (const char* const told : {"--help", "--version"}) {
            const ProgramResult text = inShell(line, {told});
            EXPECT_TRUE(exited(255, text)) << told;
            EXPECT_EQ("sftpclient: standard output cannot be written", lastLine(text.err)) << told;
        }
        EXPECT_TRUE(exited(0, inShell(line, {"test", url()}))) << "there is nothing to lose";
    }
}

TEST_F(NothingLost, OfFilesWrittenToStandardOutputByName)
{
    writeFile(served("file"), "contents");
    serve();
    for (const Words& form : std::vector<Words>{{"get", url("/file"), "/dev/stdout"},
                                                {"get", url("/file"), "/dev/fd/1"},
                                                {"ls", url(), "/proc/self/fd/1"}}) {
        SCOPED_TRACE(testing::PrintToString(form));
        for (const std::string line : {"\"$0\" \"$@\"", "\"$0\" \"$@\" | cat"}) {
            SCOPED_TRACE(line);
            const ProgramResult result = inShell(line, form);
            EXPECT_EQ("", result.out);
            EXPECT_EQ(0U,
                      lastLine(result.err).find("sftpclient: " + form[2] + " is an open file of the command itself: "))
                << result.err;
        }
        EXPECT_TRUE(exited(2, inShell("\"$0\" \"$@\"", form)));
    }
    EXPECT_EQ(0U, sessions().size());
    EXPECT_TRUE(exited(0, run({"get", url("/file"), "/dev/null"})));
}

TEST_F(NothingLost, OfSpecialFiles)
{
    serve();
    ASSERT_EQ(0, mkfifo(local("pipe").c_str(), 0600));
    for (const std::string file : {"pipe", "/dev/zero", "/dev/null", "."}) {
        SCOPED_TRACE(file);
        const ProgramResult result = run({"put", file, url("/sent")});
        EXPECT_TRUE(exited(2, result));
        EXPECT_TRUE(holds(": put sends regular files only; ", result.err));
    }
    const ProgramResult piped = inShell("echo contents | \"$0\" \"$@\"", {"put", "/dev/stdin", url("/sent")});
    EXPECT_TRUE(exited(2, piped));
    EXPECT_EQ(0U, sessions().size());
    EXPECT_FALSE(exists(served("sent")));
}

TEST_F(NothingLost, ToEndlessInputs)
{
    serve();
    ASSERT_EQ(0, mkfifo(local("pipe").c_str(), 0600));
    for (const Words& form : std::vector<Words>{{"ls", url(), "--config", "/dev/zero"},
                                                {"ls", url(), "--config", "pipe"},
                                                {"ls", url(), "--password-file", "/dev/zero"},
                                                {"ls", plainUrl(), "--netrc-file", "/dev/zero"}}) {
        SCOPED_TRACE(testing::PrintToString(form));
        const ProgramResult result = run(form, {{"SFTPCLIENT_PASSWORD", ""}});
        EXPECT_TRUE(exited(2, result));
        EXPECT_TRUE(holds(form[3], result.err));
    }
    EXPECT_TRUE(exited(0, run({"ls", url(), "--config", "/dev/null"})));
}

// The signal SIGXFSZ would end the command before it can say so.
TEST_F(NothingLost, OfAFileLongerThanTheLimitOfSizes)
{
    writeFile(served("large"), std::string(300000, 'x'));
    serve();
    for (const std::string line : {"ulimit -f 400; \"$0\" \"$@\" large", "ulimit -f 400; \"$0\" \"$@\" - >out"}) {
        SCOPED_TRACE(line);
        const ProgramResult result = inShell(line, {"get", url("/large"), "--quiet"});
        EXPECT_TRUE(exited(23, result));
        EXPECT_TRUE(holds("File too large", lastLine(result.err))) << result.err;
        EXPECT_FALSE(std::filesystem::exists(local("large")));
    }
}
