// Links, names that lead elsewhere, leftovers, contents and times that servers tell in several ways.
#include "harness/PushPull.h"
#include "support/CurlRelease.h"

#include <curl/curl.h>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

TEST_F(PushPull, LinksAreToldAndLeftOut)
{
    plant(here(), {{"a", "1"}, {"d/", ""}});
    writeFile(local("outside"), "secret");
    fs::create_symlink("../outside", here("link"));
    fs::create_symlink(local(""), here("d/folder"));
    serve();
    ProgramResult result = push();
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameLines({"push: d/folder: a link or no regular file; left out",
                           "push: link: a link or no regular file; left out",
                           "push: 0 No error: 1 moved (1 B), 0 unchanged, 2 skipped"},
                          linesOf(result.err)));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}}, treeIn(there())));
    fs::create_symlink("a", there("other"));
    result = pull({"--delete"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameLines(
        {"pull: other: a link or no regular file; left out", "pull: 0 No error: 0 moved (0 B), 1 unchanged, 1 skipped"},
        linesOf(result.err)));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}, {"d/folder", "-> " + local("")}, {"link", "-> ../outside"}},
                          treeIn(here())));
}

TEST_F(PushPull, NoNameOfTheServersLeadsOutOfTheDirectory)
{
    config.listedToo = {"type=file;size=4;modify=20260101000000; ../evil",
                        "type=file;size=4;modify=20260101000000; " + local("evil"),
                        "type=dir;modify=20260101000000; ..",
                        "type=dir;modify=20260101000000; /",
                        "type=file;size=4;modify=20260101000000; .",
                        "type=dir;modify=20260101000000; a/../../x"};
    plant(there(), {{"a", "1"}});
    writeFile(served("evil"), "evil");
    serve();
    EXPECT_TRUE(exited(0, pull()));
    EXPECT_TRUE(sameTrees({{"here/", ""}, {"here/a", "1"}}, treeIn(local(""))));
}

TEST_F(PushPull, NoLocalLinkLeadsOutOfTheDirectory)
{
    plant(local("outside"), {{"x", "mine"}, {"y", "mine"}});
    plant(there(), {{"a", "1"}, {"d/x", "theirs"}, {"d/z", "theirs"}, {"y", "theirs"}});
    fs::create_symlink(local("outside"), here("d"));
    fs::create_symlink(local("outside/y"), here("y"));
    serve();
    const ProgramResult result = pull({"--keep-going", "--delete"});
    EXPECT_TRUE(exited(CURLE_WRITE_ERROR, result));
    EXPECT_TRUE(sameLines({"pull: d: 23 something of another kind has this name at the destination",
                           "pull: y: 23 something of another kind has this name at the destination",
                           "pull: 23 d: something of another kind has this name at the destination: 1 moved (1 B), 0 "
                           "unchanged, 2 failed"},
                          linesOf(result.err)));
    EXPECT_TRUE(sameTrees({{"x", "mine"}, {"y", "mine"}}, treeIn(local("outside"))));
    EXPECT_EQ("1", contentOf(here("a")));
}

// What a server does not show is not taken for missing.
TEST_F(PushPull, DotNamesStayWhereTheServerHidesThem)
{
    const Tree hidden = {{".rc", "1"}, {"d/.git/x", "2"}, {"d/.git/y.", "3"}, {"e/.hidden", "4"}};
    config.hidesDotNames = true;
    plant(there(), {{"a", "1"}});
    plant(there(), hidden);
    plant(here(), {{"a", "1"}, {"gone", "5"}, {"f/gone", "5"}, {"e/gone", "5"}});
    plant(here(), hidden);
    setAll(here(), kTime);
    setAll(there(), kTime);
    serve();
    expectLine("pull: 0 No error: 0 moved (0 B), 4 deleted, 1 unchanged", pull({"--delete"}));
    EXPECT_TRUE(sameTrees({{"a", "1"},
                           {".rc", "1"},
                           {"d/", ""},
                           {"d/.git/", ""},
                           {"d/.git/x", "2"},
                           {"d/.git/y.", "3"},
                           {"e/", ""},
                           {"e/.hidden", "4"}},
                          treeIn(here())));
}

TEST_F(PushPull, DotNamesGoWhereTheServerShowsAny)
{
    plant(there(), {{"a", "1"}, {"d/.shown", "1"}});
    plant(here(), {{".gone", "5"}, {".d/gone", "5"}});
    serve();
    expectLine("pull: 0 No error: 2 moved (2 B), 3 deleted, 0 unchanged", pull({"--delete"}));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}, {"d/.shown", "1"}}, treeIn(here())));
    fs::remove_all(there("d"));
    setAll(here(), kTime);
    setAll(there(), kTime);
    plant(there(), {{".x.0123456789ab.part", "half"}});
    plant(here(), {{".gone", "5"}});
    expectLine("pull: 0 No error: 0 moved (0 B), 3 deleted, 1 unchanged", pull({"--delete"}));
    EXPECT_TRUE(sameTrees({{"a", "1"}}, treeIn(here())));
}

TEST_F(PushPull, AKindThatDiffersIsAFailure)
{
    plant(here(), {{"a", "1"}, {"b/c", "2"}});
    plant(there(), {{"a/x", "1"}, {"b", "2"}});
    serve();
    const ProgramResult result = push({"--keep-going", "--delete"});
    EXPECT_TRUE(exited(CURLE_UPLOAD_FAILED, result));
    EXPECT_TRUE(holds("push: a: 25 ", result.err));
    EXPECT_TRUE(holds("push: b: 25 ", result.err));
    EXPECT_TRUE(sameTrees({{"a/", ""}, {"a/x", "1"}, {"b", "2"}}, treeIn(there())));
}

TEST_F(PushPull, WhatBrokenTransfersLeftIsNotMovedAndGoes)
{
    const std::string kept = ".b.0123456789ab.part";
    plant(here(), {{"a", "1"}, {".x.0123456789ab.part", "half"}, {"d/.y.4711.0.part", "half"}});
    plant(there(), {{".a.0123456789ab.part", "half"}, {".a.0123456789AB.old", "old"}, {kept, "half"}});
    serve();
    EXPECT_TRUE(exited(0, push()));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}, {kept, "half"}}, treeIn(there())));
    EXPECT_TRUE(exited(0, push({"--delete"})));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}}, treeIn(there())));
    writeFile(here("..a.0123456789ab.part.4711.0.part"), "half");
    writeFile(there(".z.0123456789ab.part"), "half");
    EXPECT_TRUE(exited(0, pull()));
    EXPECT_FALSE(exists(here("..a.0123456789ab.part.4711.0.part")));
    EXPECT_FALSE(exists(here(".z.0123456789ab.part")));
}

// Their names have only the beginning of the file's.
TEST_F(PushPull, WhatBrokenTransfersLeftOfFilesWithLongNamesGoes)
{
    const auto left = [](std::size_t size, char letter) {
        return "." + std::string(size, letter) + ".0123456789ab.part";
    };
    const Tree tree = {{std::string(250, 'n'), "1"}};
    // The last ones are of other files, with whole names.
    const Tree others = {{left(170, 'n'), "half"},
                         {left(180, 'm'), "half"},
                         {left(200, 'n'), "half"},
                         {"." + std::string(180, 'n') + ".0123456789ab.old", "old"}};
    for (const bool isPush : {true, false}) {
        SCOPED_TRACE(isPush);
        const std::string destination = isPush ? there() : here();
        fs::remove_all(here());
        fs::remove_all(there());
        plant(isPush ? here() : there(), tree);
        plant(destination, others);
        plant(destination, {{left(180, 'n'), "half"}, {left(236, 'n'), "half"}});
        serve();
        EXPECT_TRUE(exited(0, isPush ? push() : pull()));
        Tree expected = others;
        expected.insert(tree.begin(), tree.end());
        EXPECT_TRUE(sameTrees(expected, treeIn(destination)));
    }
}

TEST_F(PushPull, ALargeFileGoesOnWhereItBrokeOff)
{
    const std::string content = std::string(300000, 'x') + std::string(300000, 'y');
    plant(there(), {{"a", content}});
    setAll(there(), kTime);
    serve({"1/DATA#2=drop-after:400000"});
    EXPECT_TRUE(exited(brokenData(), pull({"--resume", "--jobs", "1"})));
    EXPECT_FALSE(exists(here("a")));
    EXPECT_TRUE(exited(0, pull({"--resume", "--jobs", "1"})));
    EXPECT_TRUE(sameTrees({{"a", content}}, treeIn(here())));
    const Lines begun = commands({"REST"});
    ASSERT_FALSE(begun.empty());
    EXPECT_NE("REST 0", begun.back());
}

TEST_F(PushPull, ContentsAreComparedByTheServersChecksums)
{
    for (const char* const offered : {"HASH", "XSHA256", "XCRC"}) {
        SCOPED_TRACE(offered);
        config.checksums = {offered};
        plant(here(), {{"same", "12345"}, {"different", "12345"}});
        plant(there(), {{"same", "12345"}, {"different", "54321"}});
        setAll(here(), kTime);
        setAll(there(), kTime);
        setModified(here("same"), kTime + 100);
        serve();
        expectLine("push: 0 No error: 1 would be moved (5 B), 1 unchanged", push({"--dry-run"}));
        expectLine("push: 0 No error: 1 moved (5 B), 1 unchanged", push({"--checksum"}));
        EXPECT_EQ("12345", contentOf(there("different")));
        EXPECT_EQ(kTime + 100, modified(there("same")));
        writeFile(there("different"), "54321");
        setModified(there("different"), kTime);
        setModified(there("same"), kTime);
        expectLine("pull: 0 No error: 1 moved (5 B), 1 unchanged", pull({"--checksum"}));
        EXPECT_EQ("54321", contentOf(here("different")));
        EXPECT_EQ(kTime, modified(here("same")));
    }
}

// To read it all would take hours.
TEST_F(PushPull, AnEndDoesNotWaitForAChecksum)
{
    config.checksums = {"XSHA256"};
    for (const std::string& root : {here(), there()}) {
        plant(root, {{"a", ""}});
        fs::resize_file(root + "/a", std::uintmax_t(1) << 40U);
    }
    serve({"XSHA256=reply:250 " + std::string(64, '0')});
    const ProgramResult result = push({"--checksum", "--max-time", "1"});
    EXPECT_TRUE(exited(CURLE_OPERATION_TIMEDOUT, result));
    EXPECT_TRUE(holds("it did not finish within 1 s (--max-time)", result.err)) << result.err;
}

TEST_F(PushPull, AServerWithoutChecksumsIsToldAndComparedByTimes)
{
    plant(here(), {{"same", "12345"}, {"later", "12345"}});
    plant(there(), {{"same", "54321"}, {"later", "54321"}});
    setAll(here(), kTime);
    setAll(there(), kTime);
    setModified(here("later"), kTime + 100);
    serve();
    const ProgramResult result = push({"--checksum"});
    EXPECT_TRUE(sameLines({"push: the server computes no checksums (HASH with SHA-256, XSHA256, XCRC): sizes and "
                           "times were compared",
                           "push: 0 No error: 1 moved (5 B), 1 unchanged"},
                          linesOf(result.err)));
    EXPECT_EQ("12345", contentOf(there("later")));
    EXPECT_EQ("54321", contentOf(there("same")));
}

// FEAT lists it all the same.
TEST_F(PushPull, AServerThatDoesNotKnowItsChecksumCommandIsComparedByTimes)
{
    for (const char* const reply : {"500", "502", "504"}) {
        SCOPED_TRACE(reply);
        config.checksums = {"XSHA256"};
        plant(here(), {{"same", "12345"}, {"later", "12345"}});
        plant(there(), {{"same", "54321"}, {"later", "54321"}});
        setAll(here(), kTime);
        setAll(there(), kTime);
        setModified(here("later"), kTime + 100);
        serve({"XSHA256=reply:" + std::string(reply) + " what"});
        const ProgramResult result = push({"--checksum", "--jobs", "1"});
        EXPECT_TRUE(sameLines({"push: the server computes no checksums (HASH with SHA-256, XSHA256, XCRC): sizes and "
                               "times were compared",
                               "push: 0 No error: 1 moved (5 B), 1 unchanged"},
                              linesOf(result.err)));
        EXPECT_EQ(1U, commands({"XSHA256"}).size());
        server.reset();
    }
}

TEST_F(PushPull, AFileWhoseChecksumIsRefusedIsAFailure)
{
    config.checksums = {"XSHA256"};
    plant(here(), {{"a", "12345"}});
    plant(there(), {{"a", "54321"}});
    serve({"XSHA256=reply:550 too large"});
    EXPECT_TRUE(exited(CURLE_QUOTE_ERROR, push({"--checksum"})));
    EXPECT_EQ("54321", contentOf(there("a")));
}

// Neither MLSD nor MFMT: times come by MDTM, and a file that is newer there has come by push.
TEST_F(PushPull, AServerThatNeitherListsNorSetsTimes)
{
    plant(here(), {{"a", "12345"}, {"d/b", "12345"}});
    setAll(here(), kTime);
    serve({"FEAT=reply:500 unknown command"});
    expectLine("push: 0 No error: 2 moved (10 B), 0 unchanged", push());
    expectLine("push: 0 No error: 0 would be moved (0 B), 2 unchanged", push({"--dry-run"}));
    expectLine("push: 0 No error: 0 moved (0 B), 2 unchanged", push());
    setModified(here("a"), std::time(nullptr) + 1000);
    expectLine("push: 0 No error: 1 moved (5 B), 1 unchanged", push());
    setAll(there(), kTime + 5);
    expectLine("pull: 0 No error: 2 moved (10 B), 0 unchanged", pull());
    EXPECT_EQ(timesIn(there()), timesIn(here()));
    expectLine("pull: 0 No error: 0 moved (0 B), 2 unchanged", pull());
}

// A server that sets times has not got a file by push whose time is another one.
TEST_F(PushPull, AFileThatIsNewerThereIsReplacedWhereTimesAreKept)
{
    plant(here(), {{"a", "12345"}});
    plant(there(), {{"a", "54321"}});
    setAll(here(), kTime);
    serve();
    expectLine("push: 0 No error: 1 moved (5 B), 0 unchanged", push());
    EXPECT_EQ("12345", contentOf(there("a")));
}

TEST_F(PushPull, AServerThatRefusesToSetAnyTimeGetsFilesAgain)
{
    plant(here(), {{"a", "12345"}, {"b", "12345"}});
    setAll(here(), kTime);
    serve({"MFMT=reply:550 permission denied"});
    expectLine("push: 0 No error: 2 moved (10 B), 0 unchanged", push());
    expectLine("push: 0 No error: 2 would be moved (10 B), 0 unchanged", push({"--dry-run"}));
    expectLine("push: 0 No error: 2 moved (10 B), 0 unchanged", push());
}

TEST_F(PushPull, ATimeThatIsRefusedIsToldAndTheOthersAreSet)
{
    plant(here(), {{"a", "12345"}, {"b", "12345"}, {"c", "12345"}});
    setAll(here(), kTime);
    serve({"1/MFMT#1=reply:550 not this one"});
    const ProgramResult result = push({"--jobs", "1"});
    EXPECT_TRUE(exited(0, result));
    const Lines told = linesOf(result.err);
    ASSERT_EQ(2U, told.size()) << result.err;
    EXPECT_EQ(0U, told[0].find("push: a: the server did not set the file's time: ")) << told[0];
    EXPECT_TRUE(holds("550 not this one", told[0]));
    EXPECT_EQ("push: 0 No error: 3 moved (15 B), 0 unchanged", told[1]);
    EXPECT_NE(kTime, modified(there("a")));
    EXPECT_EQ(kTime, modified(there("b")));
    EXPECT_EQ(kTime, modified(there("c")));
}

TEST_F(PushPull, ATimeThatCannotBeSetForNowIsAFailureThatIsTriedAgain)
{
    plant(here(), {{"a", "12345"}, {"b", "12345"}});
    setAll(here(), kTime);
    serve({"1/MFMT#1=reply:450 busy"});
    EXPECT_TRUE(exited(0, push({"--jobs", "1", "--retry", "1", "--retry-delay", "0.01"})));
    EXPECT_EQ(timesIn(here()), timesIn(there()));
    server.reset();
    setAll(there(), kTime + 100);
    serve({"1/MFMT#2=reply:450 busy"}); // the first asks whether the server knows it
    const ProgramResult result = push({"--jobs", "1", "--keep-going"});
    EXPECT_TRUE(exited(CURLE_QUOTE_ERROR, result));
    EXPECT_TRUE(holds("push: a: 21 ", result.err)) << result.err;
    EXPECT_EQ(kTime, modified(there("b")));
}

// FEAT lists it all the same.
TEST_F(PushPull, AServerThatDoesNotKnowMfmtIsToldByItsReply)
{
    for (const char* const reply : {"500", "502", "504"}) {
        SCOPED_TRACE(reply);
        fs::remove_all(there());
        plant(here(), {{"a", "12345"}, {"b", "12345"}});
        setAll(here(), kTime);
        serve({"MFMT=reply:" + std::string(reply) + " what"});
        EXPECT_EQ("push: 0 No error: 2 moved (10 B), 0 unchanged\n", push({"--jobs", "1"}).err);
        EXPECT_EQ(1U, commands({"MFMT"}).size());
        server.reset();
    }
}

TEST_F(PushPull, ANameWithAControlByteIsAFailureOfADryRunToo)
{
    plant(here(), {{"a\nb", "1"}, {"c", "2"}, {"d\x7f/x", "3"}});
    plant(there(), {{"z\x01", "4"}, {"y\x01/x", "5"}});
    serve();
    for (const bool isDryRun : {true, false}) {
        SCOPED_TRACE(isDryRun);
        Words how = {"--keep-going", "--delete"};
        if (isDryRun) {
            how.emplace_back("--dry-run");
        }
        const std::string would = isDryRun ? "would be " : "";
        ProgramResult result = push(how);
        EXPECT_TRUE(exited(CURLE_BAD_FUNCTION_ARGUMENT, result));
        EXPECT_TRUE(sameLines({"push: a\\nb: 43 a name with a control byte cannot be sent",
                               "push: d\\x7f: 43 a name with a control byte cannot be sent",
                               "push: z\\x01: 43 a name with a control byte cannot be deleted",
                               "push: y\\x01: 43 a name with a control byte cannot be deleted",
                               "push: 43 a\\nb: a name with a control byte cannot be sent: 1 " + would +
                                   "moved (1 B), 0 unchanged, 4 failed"},
                              linesOf(result.err)))
            << result.err;
        result = run(isDryRun ? Words{"pull", url("/there/"), "back", "--keep-going", "--dry-run"}
                              : Words{"pull", url("/there/"), "back", "--keep-going"});
        EXPECT_TRUE(exited(CURLE_BAD_FUNCTION_ARGUMENT, result));
        EXPECT_TRUE(holds("pull: z\\x01: 43 a name with a control byte cannot be fetched\n", result.err)) << result.err;
        EXPECT_TRUE(holds("pull: y\\x01: 43 a name with a control byte cannot be fetched\n", result.err)) << result.err;
        EXPECT_TRUE(holds("unchanged, 2 failed\n", result.err)) << result.err;
    }
}

TEST_F(PushPull, TheModeOfAReplacedFileStays)
{
    plant(here(), {{"a", "1"}});
    plant(there(), {{"a", "22"}});
    fs::permissions(here("a"), fs::perms::owner_read | fs::perms::owner_write | fs::perms::set_uid);
    serve();
    EXPECT_TRUE(exited(0, pull()));
    EXPECT_EQ("22", contentOf(here("a")));
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(here("a")).permissions());
}

TEST_F(PushPull, ADirectoryThatCannotBeListedIsAFailure)
{
    plant(there(), {{"a", "1"}, {"d/b", "2"}, {"e/c", "3"}});
    plant(here(), {{"d/old", "0"}});
    serve({"MLSD#2=reply:550 not that"});
    const ProgramResult result = pull({"--jobs", "1", "--keep-going", "--delete"});
    EXPECT_EQ(CURLE_FTP_COULDNT_RETR_FILE, result.status) << result.err;
    EXPECT_TRUE(holds("pull: d: 19 ", result.err));
    EXPECT_TRUE(sameTrees({{"a", "1"}, {"d/", ""}, {"d/old", "0"}, {"e/", ""}, {"e/c", "3"}}, treeIn(here())));
}

TEST_F(PushPull, TheWholeMayHaveALimit)
{
    plant(here(), {{"a", "1"}});
    serve({"STOR=stall"});
    const ProgramResult result = push({"--max-time", "1"});
    EXPECT_TRUE(exited(CURLE_OPERATION_TIMEDOUT, result));
    expectLine("push: 28 Timeout was reached: it did not finish within 1 s (--max-time); the same command goes on from "
               "here: 0 moved (0 B), 0 unchanged",
               result);
}

TEST_F(PushPull, TextsNameTheOptionsOfTheCommand)
{
    plant(there(), {{"a", "1"}});
    serve({"RETR=stall"});
    const ProgramResult result = pull({"--stall-time", "1"});
    EXPECT_TRUE(exited(CURLE_OPERATION_TIMEDOUT, result));
    EXPECT_TRUE(holds("no reply for --stall-time, 1000 ms", result.err)) << result.err;
}
