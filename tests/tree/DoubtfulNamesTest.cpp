// Names that some servers and disks take for others.
#include "harness/PushPull.h"

#include <curl/curl.h>

#include <filesystem>

namespace fs = std::filesystem;

// Otherwise, of two files one would be lost, and the old name would be deleted with the new file.
TEST_F(PushPull, ADestinationThatIgnoresCaseKeepsNoTwoNamesThatDifferInCaseAlone)
{
    const std::string told = ": 25 the destination has another name in place of this one";
    config.ignoresCase = true;
    plant(here(), {{"A", "12"}, {"a", "1"}, {"b", "2"}});
    setAll(here(), kTime);
    serve();
    EXPECT_TRUE(exited(0, push({"--dry-run"})));
    ProgramResult result = push({"--jobs", "1"});
    EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
    EXPECT_EQ("push: a" + told, linesOf(result.err).front());
    EXPECT_TRUE(sameTrees({{"A", "1"}, {"b", "2"}}, treeIn(there())));
    fs::remove(here("A"));
    result = push({"--delete"});
    EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
    EXPECT_EQ("push: a" + told, linesOf(result.err).front());
    EXPECT_EQ("1", contentOf(there("A")));
    EXPECT_TRUE(exited(0, run({"push", "here", url("/there/"), "--exclude", "a"})));
}

// A disk that ignores case has one name for both.
TEST_F(PushPull, ADiskThatIgnoresCaseKeepsNoTwoNamesThatDifferInCaseAlone)
{
    plant(there(), {{"A", "1"}, {"a", "2"}, {"z", "3"}});
    plant(here(), {{"old", "4"}});
    config.onCommand = [this](const std::string& command) {
        if (command == "RETR" && exists(here("a"))) {
            fs::rename(here("a"), here("A"));
        }
    };
    serve();
    const ProgramResult result = pull({"--jobs", "1", "--delete"});
    EXPECT_TRUE(exited(CURLE_WRITE_ERROR, result));
    EXPECT_EQ("pull: a: 23 the destination has another name in place of this one", linesOf(result.err).front());
    EXPECT_TRUE(sameTrees({{"A", "2"}, {"old", "4"}, {"z", "3"}}, treeIn(here())));
}

// Pure-FTPd puts "_" in place of a blank at the end of a name, Windows leaves a dot there out.
TEST_F(PushPull, ANameThatTheDestinationChangesIsAFailure)
{
    for (const auto& [name, shown] :
         {std::pair(" x", " x"), {"x ", "x "}, {"x.", "x."}, {"d /x", "d /x"}, {"\xff\xff", "\\xff\\xff"}}) {
        SCOPED_TRACE(shown);
        fs::remove_all(here());
        plant(here(), {{name, "1"}});
        serve({"RNTO=reply:250 renamed"});
        const ProgramResult result = push();
        EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
        expectLine("push: 25 " + std::string(shown) +
                       ": the destination has another name in place of this one: 1 moved (1 B), 0 unchanged, 1 failed",
                   result);
        serve();
        EXPECT_TRUE(exited(0, push()));
        server.reset();
    }
}

// Of these letters, too, a destination may ignore the case, or whether they are composed. Here it gives the new file
// the name of the old one.
TEST_F(PushPull, AFileThatGotTheOldOneOfTwoSpellingsIsNotDeleted)
{
    for (const char* const old : {"\xc3\x84", "a\xcc\x88"}) {
        SCOPED_TRACE(old);
        fs::remove_all(there());
        plant(here(), {{"\xc3\xa4", "1"}});
        plant(there(), {{old, "1"}});
        serve({"RNTO=reply:250 renamed"});
        const ProgramResult result = push({"--delete"});
        EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
        EXPECT_TRUE(holds("push: \xc3\xa4: 25 the destination has another name in place of this one\n", result.err));
        EXPECT_TRUE(exists(there(old)));
        server.reset();
    }
}

TEST_F(PushPull, AFileThatWasNotMovedHasNoOtherName)
{
    plant(here(), {{"a", "1"}, {"\xc3\xa4", "2"}});
    serve({"STOR=reply:552 no room"});
    const ProgramResult result = push({"--keep-going"});
    EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
    EXPECT_FALSE(holds("another name", result.err));
    EXPECT_TRUE(holds(" 0 unchanged, 2 failed", result.err));
}

TEST_F(PushPull, WhereNothingIsMovedTheDestinationIsListedOnce)
{
    const auto listings = [this] {
        std::ptrdiff_t count = 0;
        for (const Lines& session : server->transcripts()) {
            count += std::count_if(session.begin(), session.end(),
                                   [](const std::string& line) { return line.compare(0, 6, "> MLSD") == 0; });
        }
        return count;
    };
    plant(here(), {{"\xc3\xa4", "2"}});
    config.checksums = {"XSHA256"};
    serve();
    EXPECT_TRUE(exited(0, push()));
    EXPECT_EQ(2, listings());
    setAll(here(), kTime);
    EXPECT_TRUE(exited(0, push({"--checksum"})));
    EXPECT_EQ(3, listings());
}

TEST_F(PushPull, NamesThatDifferInCaseAloneAreMovedWhereTheDestinationTellsThemApart)
{
    plant(here(), {{"A", "12"}, {"a", "1"}, {"d/x", "2"}, {"D/x", "3"}});
    plant(there(), {{"e", "5"}, {"d/X", "4"}});
    serve();
    EXPECT_TRUE(exited(0, push({"--delete"})));
    EXPECT_TRUE(sameTrees(treeIn(here()), treeIn(there())));
    plant(there(), {{"E", "5"}});
    EXPECT_TRUE(exited(0, pull({"--delete"})));
    EXPECT_TRUE(sameTrees(treeIn(there()), treeIn(here())));
    config.hidesDotNames = true;
    plant(here(), {{".A", "1"}, {".a", "2"}});
    serve();
    EXPECT_TRUE(exited(0, push()));
}
