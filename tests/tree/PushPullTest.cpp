// What push and pull do to trees, and what they say about it.
#include "harness/PushPull.h"
#include "support/CurlRelease.h"

#include <curl/curl.h>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

const Tree kTree = {{"a b%&#;.txt", "blanks"},  {"empty", ""},
                    {"nothing/", ""},           {"sub/", ""},
                    {"sub/deep/", ""},          {"sub/deep/x.bin", std::string(70000, 'x')},
                    {"sub/\xc3\xa4", "umlaut"}, {"sub.txt", "text"}};
const std::vector<std::string> kChanges = {"STOR", "MKD", "RMD", "DELE", "RNFR", "MFMT", "RETR", "APPE"};

} // namespace

TEST_F(PushPull, PushMakesTheSameTree)
{
    plant(here(), kTree);
    setAll(here(), kTime);
    serve();
    const ProgramResult result = push();
    EXPECT_TRUE(exited(0, result));
    expectLine("push: 0 No error: 5 moved (68.4 KiB), 0 unchanged", result);
    EXPECT_EQ("", result.out);
    EXPECT_TRUE(sameTrees(kTree, treeIn(there())));
    EXPECT_EQ(timesIn(here()), timesIn(there()));
}

TEST_F(PushPull, PullMakesTheSameTree)
{
    plant(there(), kTree);
    setAll(there(), kTime);
    serve();
    const ProgramResult result = pull();
    EXPECT_TRUE(exited(0, result));
    expectLine("pull: 0 No error: 5 moved (68.4 KiB), 0 unchanged", result);
    EXPECT_TRUE(sameTrees(kTree, treeIn(here())));
    EXPECT_EQ(timesIn(there()), timesIn(here()));
}

TEST_F(PushPull, ADestinationThatIsMissingIsMadeWithWhatIsAboveIt)
{
    plant(here(), {{"a", "1"}, {"d/", ""}});
    serve();
    EXPECT_TRUE(exited(0, run({"push", "here", url("/new/deep/er")})));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}}, treeIn(served("new/deep/er"))));
    EXPECT_TRUE(exited(0, run({"pull", url("/new/deep/er"), "made/too"})));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}}, treeIn(local("made/too"))));
}

TEST_F(PushPull, ASourceThatIsMissingIsAFailure)
{
    serve();
    ProgramResult result = run({"push", "nowhere", url("/there/")});
    EXPECT_TRUE(exited(CURLE_READ_ERROR, result));
    expectLine("push: 26 nowhere is not there: 0 moved (0 B), 0 unchanged, 1 failed", result);
    result = run({"pull", url("/nowhere/"), "here", "--delete"});
    EXPECT_TRUE(exited(CURLE_REMOTE_FILE_NOT_FOUND, result));
    expectLine("pull: 78 there is no such directory on the server: 0 moved (0 B), 0 unchanged, 1 failed", result);
}

TEST_F(PushPull, ADestinationThatCannotBeMadeEndsIt)
{
    plant(here(), {{"a", "1"}, {"d/b", "1"}});
    writeFile(local("file"), "");
    serve({"MKD=reply:550 not here"});
    ProgramResult result = run({"push", "here", url("/new/"), "--keep-going"});
    EXPECT_TRUE(exited(CURLE_QUOTE_ERROR, result));
    EXPECT_TRUE(holds("(the server's last reply: 550 not here): 0 moved (0 B), 0 unchanged, 1 failed", result.err));
    plant(there(), {{"a", "1"}, {"d/b", "1"}});
    result = run({"pull", url("/there/"), "/proc/nowhere", "--keep-going"});
    EXPECT_TRUE(exited(CURLE_WRITE_ERROR, result));
    expectLine("pull: 23 /proc/nowhere cannot be made: No such file or directory: 0 moved (0 B), 0 unchanged, 1 failed",
               result);
}

// What is there is not known, and may be the same.
TEST_F(PushPull, FilesOfADirectoryThatCannotBeListedAreNotMovedAgain)
{
    const Tree tree = {{"a", "1"}, {"d/b", "2"}, {"e/c", "3"}};
    for (const auto& [fault, result] : {std::pair("LIST#2", "1 moved (1 B), 1 unchanged, 1 failed"),
                                        std::pair("LIST#1", "0 moved (0 B), 0 unchanged, 1 failed")}) {
        SCOPED_TRACE(fault);
        fs::remove_all(there());
        for (const std::string& root : {here(), there()}) {
            plant(root, tree);
            setAll(root, kTime);
        }
        fs::remove(there("e/c"));
        serve({"FEAT=reply:500 unknown command", std::string(fault) + "=reply:450 not now"});
        const std::string line = lastLine(push({"--keep-going", "--jobs", "1"}).err);
        EXPECT_TRUE(holds("(the server's last reply: 450 not now): " + std::string(result), line)) << line;
        server.reset();
    }
}

// A disk that is unmounted while the server is listed, say.
TEST_F(PushPull, ALocalTreeThatVanishesIsAFailure)
{
    const Tree tree = {{"a", "1"}};
    plant(here(), tree);
    plant(there(), {{"b", "2"}});
    config.onCommand = [this](const std::string& command) {
        if (command == "LIST" || command == "MLSD") {
            fs::remove_all(here());
        }
    };
    serve();
    ProgramResult result = push({"--delete"});
    EXPECT_TRUE(exited(CURLE_READ_ERROR, result));
    expectLine("push: 26 here cannot be read as a directory: No such file or directory: 0 moved (0 B), 0 unchanged, 1 "
               "failed",
               result);
    plant(here(), tree);
    result = pull({"--delete"});
    EXPECT_TRUE(exited(CURLE_READ_ERROR, result));
    expectLine("pull: 26 here cannot be read as a directory: No such file or directory: 0 moved (0 B), 0 unchanged, 1 "
               "failed",
               result);
    EXPECT_TRUE(sameTrees({{"b", "2"}}, treeIn(there())));
}

// It changes while it is sent, twice.
TEST_F(PushPull, AFileThatChangesWhileItIsSentIsSentAgain)
{
    plant(here(), {{"a", "12345"}});
    setAll(here(), kTime);
    config.onCommand = [this, count = 0](const std::string& command) mutable {
        if (command == "STOR" && ++count <= 2) {
            setModified(here("a"), kTime + count);
        }
    };
    serve();
    expectLine("push: 0 No error: 1 moved (5 B), 0 unchanged", push());
    EXPECT_EQ(3U, commands({"STOR"}).size());
    EXPECT_EQ(kTime + 2, modified(there("a")));
}

TEST_F(PushPull, AFileThatIsReplacedWhileItIsSentIsSentAgain)
{
    plant(here(), {{"a", "12345"}});
    setAll(here(), kTime);
    config.onCommand = [this, count = 0](const std::string& command) mutable {
        if (command == "STOR" && ++count == 1) {
            writeFile(local("new"), "54321");
            setModified(local("new"), kTime);
            fs::rename(local("new"), here("a"));
        }
    };
    serve();
    expectLine("push: 0 No error: 1 moved (5 B), 0 unchanged", push());
    EXPECT_EQ("54321", contentOf(there("a")));
}

// What the server has then may be half of one and half of the other.
TEST_F(PushPull, AFileThatChangesEachTimeIsSentAgainByTheNextRun)
{
    for (const char* const fault : {"FEAT=reply:500 unknown command", "MFMT=reply:550 not allowed", "NOOP=stall"}) {
        SCOPED_TRACE(fault);
        fs::remove_all(there());
        plant(here(), {{"a", "12345"}});
        config.onCommand = [this, count = 0](const std::string& command) mutable {
            if (command == "STOR" && ++count <= 3) {
                setModified(here("a"), kTime + count);
            }
        };
        serve({fault});
        const ProgramResult result = push();
        EXPECT_TRUE(exited(CURLE_READ_ERROR, result));
        expectLine("push: 26 a: the file has changed each time while it was sent: 0 moved (0 B), 0 unchanged, 1 failed",
                   result);
        expectLine("push: 0 No error: 1 moved (5 B), 0 unchanged", push());
        server.reset();
    }
}

TEST_F(PushPull, AFileThatHasChangedAndCannotBeSentAgainDoesNotStay)
{
    config.onCommand = [this](const std::string& command) {
        if (command == "STOR") {
            setModified(here("a"), kTime);
        }
    };
    const Lines faults = {"FEAT=reply:500 unknown command", "STOR#2=reply:552 quota exceeded"};
    plant(here(), {{"a", "12345"}});
    serve(faults);
    const ProgramResult result = push({"--jobs", "1"});
    EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
    EXPECT_FALSE(exists(there("a")));
    server.reset();
    plant(here(), {{"a", "54321"}});
    serve({faults[0], faults[1], "DELE=reply:550 not here"});
    const ProgramResult kept = push({"--jobs", "1"});
    EXPECT_TRUE(exited(CURLE_READ_ERROR, kept));
    EXPECT_TRUE(holds("push: a: 26 the file has changed while it was sent, and what the server has of it cannot be "
                      "deleted: ",
                      kept.err))
        << kept.err;
    EXPECT_EQ("54321", contentOf(there("a")));
}

TEST_F(PushPull, OnlyWhatDiffersIsMoved)
{
    const Tree before = {{"same", "12345"}, {"size", "12345"}, {"time", "12345"}, {"d/near", "12345"}};
    for (const bool isPush : {true, false}) {
        SCOPED_TRACE(isPush);
        plant(here(), before);
        plant(there(), before);
        setAll(here(), kTime);
        setAll(there(), kTime);
        const std::string source = isPush ? here() : there();
        writeFile(source + "/size", "123456");
        setModified(source + "/size", kTime);
        setModified(source + "/time", kTime + 2);
        setModified(source + "/d/near", kTime + 1);
        serve();
        expectLine((isPush ? "push" : "pull") + std::string(": 0 No error: 2 moved (11 B), 2 unchanged"),
                   isPush ? push({"--jobs", "1"}) : pull({"--jobs", "1"}));
        const Lines moved = commands({"RETR", "RNTO"});
        EXPECT_EQ(isPush ? (Lines{"RNTO size", "RNTO time"}) : (Lines{"RETR size", "RETR time"}), moved);
        EXPECT_TRUE(sameTrees(treeIn(source), treeIn(isPush ? there() : here())));
    }
}

// One listing for each directory, and no word about a file.
TEST_F(PushPull, ARunWithNothingToDoListsAndNothingElse)
{
    plant(here(), kTree);
    setAll(here(), kTime);
    serve();
    push();
    sessions();
    server.reset();
    serve();
    expectLine("push: 0 No error: 0 moved (0 B), 5 unchanged", push({"--jobs", "1"}));
    expectLine("pull: 0 No error: 0 moved (0 B), 5 unchanged", pull({"--jobs", "1"}));
    const std::vector<Lines> both = sessions();
    ASSERT_EQ(2U, both.size());
    const Lines said = commands({"MLSD", "MDTM", "SIZE", "MLST", "STOR", "RETR", "MFMT", "DELE", "MKD", "FEAT"});
    EXPECT_EQ((Lines{"FEAT", "MLSD", "MLSD", "MLSD", "MLSD", "FEAT", "MLSD", "MLSD", "MLSD", "MLSD"}), said);
}

TEST_F(PushPull, AFileTakesSixCommandsUpAndThreeDown)
{
    plant(here(), {{"a", "1"}, {"b", "2"}});
    setAll(here(), kTime);
    serve();
    push({"--jobs", "1"});
    const Lines up = sessions().at(0);
    const auto second = std::find(up.begin(), up.end(), "> RNTO a");
    ASSERT_NE(up.end(), second);
    Lines verbs;
    for (auto line = second; line != up.end(); ++line) {
        if (line->front() == '>') {
            verbs.push_back(line->substr(2, 4));
        }
    }
    EXPECT_EQ((Lines{"RNTO", "MFMT", "EPSV", "STOR", "SIZE", "RNFR", "RNTO", "MFMT", "QUIT"}), verbs);
    std::filesystem::remove_all(here());
    pull({"--jobs", "1"});
    EXPECT_EQ((Lines{"EPSV", "EPSV", "SIZE a", "RETR a", "EPSV", "SIZE b", "RETR b"}), [this] {
        Lines all = commands({"EPSV", "SIZE", "RETR"});
        return Lines(all.end() - 7, all.end());
    }());
}

// Three connections, each of which waits until all three send.
TEST_F(PushPull, AsManyFilesMoveAtATimeAsThereAreJobs)
{
    plant(here(), {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    serve({"STOR=meet:3"});
    EXPECT_TRUE(exited(0, push({"--jobs", "3"})));
    EXPECT_EQ(3U, sessions().size());
}

TEST_F(PushPull, AServerThatAllowsFewerConnectionsIsServedByFewer)
{
    Tree tree;
    for (int i = 0; i < 20; ++i) {
        tree["file" + std::to_string(i)] = std::to_string(i);
    }
    plant(here(), tree);
    serve({"2/GREETING=last:421 too many connections", "3/GREETING=last:421 too many connections",
           "4/GREETING=last:421 too many connections"});
    EXPECT_TRUE(exited(0, push()));
    EXPECT_TRUE(sameTrees(tree, treeIn(there())));
}

TEST_F(PushPull, AServerThatAllowsNoConnectionEndsIt)
{
    plant(here(), {{"a", "1"}});
    serve({"GREETING=last:421 too many connections"});
    const ProgramResult result = push();
    EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, result.status) << result.err;
    EXPECT_TRUE(holds("421 too many connections", result.err));
}

TEST_F(PushPull, AFaultThatPassesIsTriedAgain)
{
    plant(here(), {{"a", "1"}});
    serve({"1/STOR=drop"});
    EXPECT_TRUE(exited(0, push({"--jobs", "1", "--retry", "1", "--retry-delay", "0.01"})));
    EXPECT_EQ("1", contentOf(there("a")));
}

TEST_F(PushPull, NothingIsDeletedUnlessAskedFor)
{
    for (const bool isPush : {true, false}) {
        SCOPED_TRACE(isPush);
        const std::string& source = isPush ? here() : there();
        const std::string& destination = isPush ? there() : here();
        fs::remove_all(here());
        fs::remove_all(there());
        plant(source, {{"a", "1"}});
        plant(destination, {{"b", "2"}, {"d/e/f", "3"}, {"d/g", "4"}});
        serve();
        EXPECT_TRUE(exited(0, isPush ? push() : pull()));
        EXPECT_TRUE(sameTrees({{"a", "1"}, {"b", "2"}, {"d/", ""}, {"d/e/", ""}, {"d/e/f", "3"}, {"d/g", "4"}},
                              treeIn(destination)));
        const ProgramResult result = isPush ? push({"--delete"}) : pull({"--delete"});
        expectLine(std::string(isPush ? "push" : "pull") + ": 0 No error: 0 moved (0 B), 5 deleted, 1 unchanged",
                   result);
        EXPECT_TRUE(sameTrees({{"a", "1"}}, treeIn(destination)));
    }
}

// As if somebody on the way had ended the connection behind the first line.
TEST_F(PushPull, AListingThatIsCutOffDeletesNothing)
{
    plant(there(), {{"a", "1"}, {"b", "2"}});
    plant(here(), {{"a", "1"}, {"b", "2"}});
    serve({"DATA#1=drop-after:60", "DONE=reply:226 done"});
    const ProgramResult result = pull({"--delete"});
    EXPECT_TRUE(exited(CURLE_RECV_ERROR, result));
    EXPECT_TRUE(
        holds(isCurl814() ? "unexpected eof while reading" : "nor announced the end of the data with close_notify",
              result.err))
        << result.err;
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"b", "2"}}, treeIn(here())));
}

TEST_F(PushPull, AnEmptySourceDeletesOnlyByForce)
{
    plant(there(), {{"b", "2"}});
    plant(here(), {{"d/", ""}});
    serve();
    ProgramResult result = push({"--delete"});
    EXPECT_TRUE(exited(CURLE_FAILED_INIT, result));
    expectLine("push: 2 the source holds no file: --force says that --delete is meant all the same; nothing was "
               "deleted: 0 moved (0 B), 0 unchanged, 1 failed",
               result);
    EXPECT_TRUE(sameTrees({{"b", "2"}}, treeIn(there())));
    result = push({"--delete", "--force"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameTrees({{"d/", ""}}, treeIn(there())));
    plant(here(), {{"b", "2"}});
    EXPECT_TRUE(exited(CURLE_FAILED_INIT, pull({"--delete"})));
    EXPECT_EQ("2", contentOf(here("b")));
    EXPECT_TRUE(exited(0, pull({"--delete", "--force"})));
    EXPECT_FALSE(exists(here("b")));
}

// Empty directories are part of a tree, too.
TEST_F(PushPull, AnEmptySourceDeletesNoDirectoryWithoutForce)
{
    const Tree tree = {{"d/", ""}, {"e/", ""}, {"e/x.tmp", "1"}, {"f/", ""}};
    const Words options = {"--delete", "--exclude", "*.tmp"};
    for (const bool isPush : {true, false}) {
        SCOPED_TRACE(isPush);
        const std::string destination = isPush ? there() : here();
        fs::remove_all(here());
        fs::remove_all(there());
        plant(isPush ? here() : there(), {{"f/", ""}, {"y.tmp", "1"}});
        plant(destination, tree);
        serve();
        EXPECT_TRUE(exited(CURLE_FAILED_INIT, isPush ? push(options) : pull(options)));
        EXPECT_TRUE(sameTrees(tree, treeIn(destination)));
    }
}

TEST_F(PushPull, ADryRunChangesNothing)
{
    plant(here(), {{"a", "1"}, {"new/b", "22"}});
    plant(there(), {{"old/c", "3"}});
    serve();
    const ProgramResult result = push({"--delete", "--dry-run"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_EQ("mkdir new\nmove a\nmove new/b\ndelete old\ndelete old/c\n", result.out);
    expectLine("push: 0 No error: 2 would be moved (3 B), 2 would be deleted, 0 unchanged", result);
    EXPECT_EQ(Lines{}, commands(kChanges));
    EXPECT_EQ("mkdir .\nmkdir old\nmove old/c\n", run({"pull", url("/there/"), "nowhere", "--dry-run"}).out);
    EXPECT_FALSE(exists(local("nowhere")));
    EXPECT_TRUE(sameTrees({{"old/", ""}, {"old/c", "3"}}, treeIn(there())));
}

TEST_F(PushPull, WhatIsExcludedIsNeitherMovedNorDeleted)
{
    plant(here(), {{"a.tmp", "1"}, {"b", "2"}, {"d/c.tmp", "3"}, {"d/keep/x", "4"}, {"top/x", "5"}, {"d/top/x", "6"}});
    plant(there(), {{"z.tmp", "7"}, {"gone", "8"}, {"d/keep/y", "9"}, {"e/f.tmp", "0"}, {"e/g", "0"}});
    serve();
    EXPECT_TRUE(exited(0, push({"--delete", "--exclude", "*.tmp", "--exclude", "keep/", "--exclude", "/top"})));
    EXPECT_TRUE(sameTrees({{"z.tmp", "7"},
                           {"b", "2"},
                           {"d/", ""},
                           {"d/keep/", ""},
                           {"d/keep/y", "9"},
                           {"d/top/", ""},
                           {"d/top/x", "6"},
                           {"e/", ""},
                           {"e/f.tmp", "0"}},
                          treeIn(there())));
}

// With --delete, what they were to keep would go.
TEST_F(PushPull, APatternThatMatchesNothingIsRefused)
{
    plant(here(), {{"a", "1"}});
    for (const std::string pattern : {"**/*.tmp", "d/**/x", "/", "//d", "d//x", "./d", "d/./x", "../d", "d/.."}) {
        SCOPED_TRACE(pattern);
        const ProgramResult result = run({"push", "here", "ftp://127.0.0.1:1/", "--exclude", pattern});
        EXPECT_TRUE(exited(2, result));
        EXPECT_EQ("sftpclient: --exclude must not hold \"**/\", nor an empty name, \".\" or \"..\" beside a \"/\": "
                  "without a \"/\", it matches names in every directory.",
                  linesOf(result.err).front());
    }
}

TEST_F(PushPull, TheFirstFailureEndsIt)
{
    plant(here(), {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    plant(there(), {{"old", "0"}});
    serve({"STOR#2=reply:552 quota exceeded"});
    const ProgramResult result = push({"--jobs", "1", "--delete"});
    EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
    expectLine("push: 25 b: Upload failed (at start/before it took off): Failed FTP upload: 552 (the server's last "
               "reply: 552 quota exceeded); nothing was deleted: 1 moved (1 B), 0 unchanged, 1 failed",
               result);
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"old", "0"}}, treeIn(there())));
}

TEST_F(PushPull, AFailureToDeleteDoesNotSayThatNothingWasDeleted)
{
    plant(here(), {{"k", "1"}});
    plant(there(), {{"a", "1"}, {"b", "1"}, {"c", "1"}});
    serve({"DELE#2=reply:550 in use"});
    const ProgramResult result = push({"--jobs", "1", "--delete"});
    EXPECT_TRUE(exited(CURLE_QUOTE_ERROR, result));
    EXPECT_TRUE(holds("550 in use): 1 moved (1 B), 1 deleted, 0 unchanged, 1 failed\n", result.err)) << result.err;
    EXPECT_TRUE(sameTrees({{"k", "1"}, {"a", "1"}, {"b", "1"}}, treeIn(there())));
}

TEST_F(PushPull, OnRequestItGoesOnAfterFailuresAndListsThem)
{
    plant(there(), {{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}});
    plant(here(), {{"old", "0"}});
    serve({"RETR#2=reply:450 busy", "RETR#3=reply:550 not that"});
    const ProgramResult result = pull({"--jobs", "1", "--delete", "--keep-going"});
    EXPECT_TRUE(exited(CURLE_FTP_COULDNT_RETR_FILE, result));
    const Lines told = linesOf(result.err);
    ASSERT_EQ(4U, told.size());
    EXPECT_EQ(0U, told[0].find("pull: b: 19 ")) << told[0];
    EXPECT_EQ(0U, told[1].find("pull: c: 78 ")) << told[1];
    EXPECT_EQ("hint: the server refuses to send the file or the listing; its last reply says why", told[2]);
    EXPECT_NE(std::string::npos, told[3].find("; nothing was deleted: 2 moved (2 B), 0 unchanged, 2 failed"))
        << told[3];
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d", "4"}, {"old", "0"}}, treeIn(here())));
}
