// What cannot be delivered is a failure, and told before anything is sent where that is possible.
#include "harness/Process.h"
#include "harness/Served.h"
#include "harness/TextFile.h"

#include <sys/stat.h>

namespace {

class NothingLost : public Served
{
protected:
    /// Runs a line of the shell in which $0 is the command.
    CommandResult inShell(const std::string& line, const std::vector<std::string>& words) const
    {
        const TemporaryFile out;
        const TemporaryFile err;
        ProcessSetup setup;
        setup.words = {"/bin/sh", "-c", line, SFTPCLIENT_COMMAND};
        const std::vector<std::string> form = withCa(words);
        setup.words.insert(setup.words.end(), form.begin(), form.end());
        setup.environment = environment();
        setup.folder = local("");
        setup.out = out.path();
        setup.err = err.path();
        const int status = Process(setup).wait();
        return {status, contentsOf(out.path()), contentsOf(err.path())};
    }
};

constexpr char kNotListed[] = "sftpclient: the listing cannot be written to standard output";
constexpr char kNoResult[] = "sftpclient: the result cannot be written to standard output";

} // namespace

TEST_F(NothingLost, OfAListingWithoutAPlaceToGo)
{
    writeFile(served("file"), "contents");
    serve();
    for (const std::string line : {"\"$0\" \"$@\" >&-", "\"$0\" \"$@\" > /dev/full"}) {
        const CommandResult names = inShell(line, {"ls", url()});
        EXPECT_EQ(names.status, 255) << line;
        EXPECT_EQ(lastLine(names.err), kNotListed) << line;
        const CommandResult object = inShell(line, {"test", url(), "--json"});
        EXPECT_EQ(object.status, 255) << line;
        EXPECT_EQ(lastLine(object.err), kNoResult) << line;
        const CommandResult help = inShell(line, {"--help"});
        EXPECT_EQ(help.status, 255) << line;
        EXPECT_EQ(lastLine(help.err), "sftpclient: the help cannot be written to standard output") << line;
        EXPECT_EQ(inShell(line, {"test", url()}).status, 0) << "there is nothing to lose";
    }
}

TEST_F(NothingLost, OfWhatGoesToStandardOutputByName)
{
    writeFile(served("file"), "contents");
    serve();
    for (const std::vector<std::string>& form :
         std::vector<std::vector<std::string>>{{"get", url("/file"), "/dev/stdout"},
                                               {"get", url("/file"), "/dev/fd/1"},
                                               {"ls", url(), "/proc/self/fd/1"}}) {
        for (const std::string line : {"\"$0\" \"$@\"", "\"$0\" \"$@\" | cat"}) {
            const CommandResult result = inShell(line, form);
            EXPECT_EQ(result.out, "");
            EXPECT_EQ(lastLine(result.err).find("sftpclient: " + form[2] + " is an open file of the command itself: "),
                      0U)
                << result.err;
        }
        EXPECT_EQ(inShell("\"$0\" \"$@\"", form).status, 2);
    }
    EXPECT_EQ(sessions().size(), 0U);
    EXPECT_EQ(run({"get", url("/file"), "/dev/null"}).status, 0);
}

TEST_F(NothingLost, OfWhatIsNoRegularFile)
{
    serve();
    ASSERT_EQ(mkfifo(local("pipe").c_str(), 0600), 0);
    for (const std::string file : {"pipe", "/dev/zero", "/dev/null", "."}) {
        const CommandResult result = run({"put", file, url("/sent")});
        EXPECT_EQ(result.status, 2) << result.err;
        EXPECT_NE(result.err.find(": put sends regular files only; "), std::string::npos) << result.err;
    }
    const CommandResult piped = inShell("echo contents | \"$0\" \"$@\"", {"put", "/dev/stdin", url("/sent")});
    EXPECT_EQ(piped.status, 2);
    EXPECT_EQ(sessions().size(), 0U);
    EXPECT_FALSE(exists(served("sent")));
}

TEST_F(NothingLost, ToInputsWithoutAnEnd)
{
    serve();
    ASSERT_EQ(mkfifo(local("pipe").c_str(), 0600), 0);
    for (const std::vector<std::string>& form :
         std::vector<std::vector<std::string>>{{"ls", url(), "--config", "/dev/zero"},
                                               {"ls", url(), "--config", "pipe"},
                                               {"ls", url(), "--password-file", "/dev/zero"},
                                               {"ls", plainUrl(), "--netrc-file", "/dev/zero"}}) {
        const CommandResult result = run(form, {{"SFTPCLIENT_PASSWORD", ""}});
        EXPECT_EQ(result.status, 2);
        EXPECT_NE(result.err.find(form[3]), std::string::npos) << result.err;
    }
    EXPECT_EQ(run({"ls", url(), "--config", "/dev/null"}).status, 0);
}
