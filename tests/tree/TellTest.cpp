// What push and pull tell while they run, to programs, and when they are interrupted.
#include "harness/TerminalCommand.h"
#include "harness/Trees.h"

#include <tree/Board.h>
#include <tree/TreeResult.h>

#include <curl/curl.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <sstream>

namespace {

using Json = nlohmann::json;

Tree withoutFolders(Tree tree)
{
    for (auto each = tree.begin(); each != tree.end();) {
        each = each->first.back() == '/' ? tree.erase(each) : std::next(each);
    }
    return tree;
}

class TreesTold : public Trees
{
protected:
    static Json objectOf(const ProgramResult& result)
    {
        EXPECT_EQ(1U, linesOf(result.out).size()) << result.out;
        Json object = Json::parse(result.out);
        EXPECT_TRUE(object["seconds"].is_number());
        object.erase("seconds");
        object.erase("url");
        return object;
    }
};

} // namespace

TEST_F(TreesTold, ADiskThatLosesWhatItWasGivenIsAFailure)
{
    plant(there(), {{"a", "1"}});
    serve();
    const ProgramResult result = run({"pull", url("/there/"), "here"}, {{"SFTPCLIENT_FAILING_SYNC", "yes"}});
    EXPECT_TRUE(exited(23, result));
    EXPECT_EQ("pull: 23 what was moved may not be on the disk: Input/output error: 1 moved (1 B), 0 unchanged",
              lastLine(result.err));
}

TEST_F(TreesTold, ToAProgram)
{
    plant(here(), {{"a", "1"}, {"b", "22"}, {"c", "3"}, {"d/", ""}});
    plant(there(), {{"old", "0"}});
    std::filesystem::create_symlink("a", here("link"));
    serve({"1/STOR#2=reply:552 quota"});
    const Words how = {"--jobs", "1", "--delete", "--json"};
    const Json failed = objectOf(push(how));
    EXPECT_EQ(25, failed["code"]);
    EXPECT_EQ("CURLE_UPLOAD_FAILED", failed["name"]);
    EXPECT_EQ(1U, failed["failed"].size());
    EXPECT_EQ("b", failed["failed"][0]["path"]);
    EXPECT_EQ(25, failed["failed"][0]["code"]);
    EXPECT_EQ("CURLE_UPLOAD_FAILED", failed["failed"][0]["name"]);
    EXPECT_EQ(0U, failed["failed"][0]["text"].get<std::string>().find("Upload failed"));
    EXPECT_EQ(1, failed["moved"]);
    EXPECT_EQ(0, failed["deleted"]);
    EXPECT_EQ((Json{{"operation", "push"},
                    {"code", 0},
                    {"name", "CURLE_OK"},
                    {"text", "No error"},
                    {"dryRun", false},
                    {"moved", 2},
                    {"bytes", 3},
                    {"directories", 0},
                    {"deleted", 1},
                    {"unchanged", 1},
                    {"skipped", {{{"path", "link"}}}},
                    {"failed", Json::array()}}),
              objectOf(push(how)));
    plant(there(), {{"not \xff text", "1"}});
    const Json odd = objectOf(run({"pull", url("/there/"), "odd", "--json", "--dry-run"}));
    EXPECT_EQ((Json{{"action", "move"}, {"path", "not \xef\xbf\xbd text"}, {"encodedPath", "not%20%FF%20text"}}),
              odd["actions"].back());
    const Json dry = objectOf(run({"pull", url("/there/"), "new", "--json", "--dry-run", "--exclude", "[bcn]*"}));
    EXPECT_EQ((Json{{{"action", "mkdir"}, {"path", ""}},
                    {{"action", "mkdir"}, {"path", "d"}},
                    {{"action", "move"}, {"path", "a"}}}),
              dry["actions"]);
    EXPECT_TRUE(dry["dryRun"]);
}

// An SSH server has no certificate.
TEST(TreeHint, OfAnSshServerWhoseSchemeIsInCapitals)
{
    TreeResult result;
    result.code = CURLE_PEER_FAILED_VERIFICATION;
    result.failed = {{"", result.code, "the host key is unknown"}};
    for (const std::string scheme : {"sftp", "SFTP"}) {
        result.url = scheme + "://backup.example.com/";
        EXPECT_EQ("", hintOf(result)) << scheme;
    }
}

TEST_F(TreesTold, AHintAtTheCauseOfTheFirstFailure)
{
    const std::string hint = "the server has no space left for this user; free some there, or have the quota raised";
    plant(here(), {{"a", "1"}, {"b", "22"}});
    serve({"STOR=reply:552 quota"});
    const Lines told = linesOf(push({"--jobs", "1"}).err);
    ASSERT_EQ(3U, told.size());
    EXPECT_EQ("hint: " + hint, told[1]);
    EXPECT_EQ(hint, objectOf(push({"--jobs", "1", "--json"}))["hint"]);
    std::filesystem::create_directories(there("a"));
    EXPECT_FALSE(objectOf(push({"--jobs", "1", "--json"})).contains("hint"));
}

TEST_F(TreesTold, AReplyWithItsControlBytesEscapedOnce)
{
    plant(here(), {{"a", "1"}});
    serve({"STOR=reply:552 \\x1b[2J c:\\\\d"});
    const std::string reply = "(the server's last reply: 552 \\x1B[2J c:\\d)";
    const Lines told = linesOf(push({"--jobs", "1"}).err);
    ASSERT_EQ(3U, told.size());
    EXPECT_EQ(0U, told[0].find("push: a: 25 ")) << told[0];
    EXPECT_NE(std::string::npos, told[0].find(reply)) << told[0];
    EXPECT_EQ(0U, told[2].find("push: 25 a: ")) << told[2];
    EXPECT_NE(std::string::npos, told[2].find(reply)) << told[2];
}

TEST_F(TreesTold, OnATerminalHowFarItIs)
{
    plant(here(), {{"done", std::string(1024, 'x')}, {"running", std::string(3072, 'x')}});
    serve({"STOR#2=stall"});
    TerminalCommand command(setupOf({"push", "here", url("/there/"), "--jobs", "1"}));
    command.shownUpTo("push: 1 of 2 files, 1.0 KiB of 4.0 KiB, 25 %");
    command.shownUpTo("\r\n  running: ");
    command.type("\x03");
    EXPECT_EQ(-SIGINT, command.wait());
    const std::string end = "\x1b[J"
                            "push: 42 interrupted by SIGINT; the same command goes on from here: 1 moved (1.0 KiB), 0 "
                            "unchanged\r\n";
    EXPECT_TRUE(holds(end, command.shown()));
    EXPECT_TRUE(sameTrees({{"done", std::string(1024, 'x')}}, treeIn(there())));
}

TEST_F(TreesTold, NothingButTheEndWithoutATerminalOrQuietly)
{
    plant(here(), {{"a", "1"}});
    serve();
    const std::string line = "push: 0 No error: 1 moved (1 B), 0 unchanged";
    EXPECT_EQ(line + "\n", push().err);
    std::filesystem::remove_all(there());
    TerminalCommand command(setupOf({"push", "here", url("/there/"), "--quiet"}));
    EXPECT_EQ(0, command.wait());
    EXPECT_EQ(line + "\r\n", command.shown());
}

TEST_F(TreesTold, SignalsEndItAtAnyStep)
{
    const std::pair<const char*, const char*> kSteps[] = {{"GREETING", "pull: comparing"},
                                                          {"MLSD", "pull: comparing"},
                                                          {"RETR", "pull: 0 of 2 files"},
                                                          {"DATA#3", "pull: 0 of 2 files"}};
    for (const auto& [step, shown] : kSteps) {
        SCOPED_TRACE(step);
        plant(there(), {{"a", "1"}, {"d/b", "2"}});
        serve({std::string(step) + "=stall"});
        TerminalCommand command(setupOf({"pull", url("/there/"), "here", "--json", "--jobs", "1"}));
        command.shownUpTo(shown);
        command.signal(SIGTERM);
        EXPECT_EQ(-SIGTERM, command.wait());
        EXPECT_TRUE(holds("pull: 42 interrupted by SIGTERM; the same command goes on from here: 0 moved (0 B), 0 "
                          "unchanged\r\n",
                          command.shown()));
        EXPECT_TRUE(holds("\"signal\":\"SIGTERM\"", command.shown()));
        EXPECT_EQ(Tree(), withoutFolders(treeIn(here())));
    }
}

TEST(TreeBoard, ShowsAllFilesAndEachThatRuns)
{
    Board board;
    EXPECT_EQ(std::vector<std::string>{"push: comparing"}, board.lines("push", std::chrono::seconds(2), 80));
    board.start(3, 4096);
    board.begin("d/a\n", 1024);
    board.end(true);
    board.begin("b", 2048);
    board.progress({512, 2048, TransferPhase::Transferring});
    EXPECT_EQ((std::vector<std::string>{"push: 1 of 3 files, 1.5 KiB of 4.0 KiB, 37 %, 768 B/s, 3 s left",
                                        "  b: 512 B of 2.0 KiB, 25 %"}),
              board.lines("push", std::chrono::seconds(2), 80));
    EXPECT_EQ((std::vector<std::string>{"push: 1", "  b: 51"}), board.lines("push", std::chrono::seconds(2), 7));
    board.end(false);
    EXPECT_EQ(std::vector<std::string>{"push: 2 of 3 files, 1.0 KiB of 2.0 KiB, 50 %, 512 B/s, 2 s left"},
              board.lines("push", std::chrono::seconds(2), 80));
    board.begin("\xc3\xa4\xc3\xa4", 1);
    EXPECT_EQ("  \xc3\xa4", board.lines("push", std::chrono::seconds(2), 3).at(1));
    board.begin("\xe6\xbc\xa2\xe6\xbc\xa2", 1); // each two columns wide
    EXPECT_EQ("  \xe6\xbc\xa2", board.lines("push", std::chrono::seconds(2), 5).at(1));
}

TEST(TreeBoard, WritesItsLinesOverTheLastOnes)
{
    std::ostringstream terminal;
    LiveLines lines(terminal);
    lines.show({"one", "two"}, 24);
    lines.show({"three"}, 24);
    lines.clear();
    lines.clear();
    EXPECT_EQ("one\ntwo\n\x1b[2A\r\x1b[Jthree\n\x1b[1A\r\x1b[J", terminal.str());
}

// The cursor does not get back to what has left a terminal at its top.
TEST(TreeBoard, WritesNoMoreLinesThanTheTerminalHas)
{
    std::ostringstream terminal;
    LiveLines lines(terminal);
    lines.show({"one", "two", "three"}, 3);
    lines.clear();
    EXPECT_EQ("one\ntwo\n\x1b[2A\r\x1b[J", terminal.str());
}
