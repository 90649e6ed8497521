// What the server says of a file: size, times, facts, checksums.
#include "ServerTest.h"

namespace {

using Facts = ServerTest;

TEST_F(Facts, SizesAndTimes)
{
    writeFile(served("a"), "the content");
    writeFile(served("huge"), "");
    std::filesystem::resize_file(served("huge"), 53687091200);
    std::filesystem::create_directory(served("sub"));
    EXPECT_TRUE(goesLike({{"SIZE a", "213 11"},
                          {"SIZE huge", "213 53687091200"},
                          {"SIZE sub", "550 no such file"},
                          {"SIZE missing", "550 no such file"},
                          {"MDTM a", "213 20260101000000"},
                          {"MDTM missing", "550 no such file"}}));
}

TEST_F(Facts, FactsAndTimes)
{
    std::filesystem::create_directory(served("d"));
    writeFile(served("a"), "12345");
    EXPECT_TRUE(goesLike({{"MDTM a", "213 20260101000000"},
                          {"MFMT 20251231235959 a", "213 Modify=20251231235959; a"},
                          {"MDTM a", "213 20251231235959"},
                          {"MFMT 2025 a", "501 a time and a name, please"},
                          {"MFMT 20251231235959 missing", "550 no such file"},
                          {"MLST missing", "550 no such file"}}));
}

TEST_F(Facts, FactsInAReply)
{
    std::filesystem::create_directory(served("d"));
    writeFile(served("a"), "12345");
    serve();
    {
        const auto client = login();
        EXPECT_EQ("250-facts", client->ask("MLST a"));
        EXPECT_EQ(" type=file;size=5;modify=20260101000000; /a", client->line());
        EXPECT_EQ("250 end", client->line());
        EXPECT_EQ("250-facts", client->ask("MLST d"));
        EXPECT_EQ(" type=dir;modify=20260101000000; /d", client->line());
        EXPECT_EQ("250 end", client->line());
    }
    EXPECT_TRUE(
        sameLines(Lines({"> MLST a", "< 250-facts", "<  type=file;size=5;modify=20260101000000; /a", "< 250 end",
                         "> MLST d", "< 250-facts", "<  type=dir;modify=20260101000000; /d", "< 250 end"}),
                  afterLogin()));
}

TEST_F(Facts, Checksums)
{
    config.checksums = {"HASH", "XSHA256", "XCRC"};
    writeFile(served("a b"), "content");
    const std::string sha = "ED7002B439E9AC845F22357D822BAC1444730FBDB6016D3EC9432297B9EC9F73";
    EXPECT_TRUE(goesLike({{"HASH a b", "213 MD5 0-7 9A0364B9E99BB480DD25E1F0284C8555 a b"},
                          {"OPTS HASH SHA-256", "200 ok"},
                          {"HASH a b", "213 SHA-256 0-7 " + sha + " a b"},
                          {"XSHA256 a b", "250 " + sha},
                          {"XCRC a b", "250 fec530a9"},
                          {"XCRC missing", "550 no such file"}}));
    config.checksums = {"XCRC"};
    EXPECT_TRUE(goesLike({{"HASH a b", "500 unknown command"}, {"XSHA256 a b", "500 unknown command"}}));
}

TEST_F(Facts, TimesOfTheDisk)
{
    config.timesOfDisk = true;
    writeFile(served("a"), "12345");
    EXPECT_TRUE(
        goesLike({{"MFMT 20231114221320 a", "213 Modify=20231114221320; a"}, {"MDTM a", "213 20231114221320"}}));
    const auto time = std::filesystem::last_write_time(served("a"));
    writeFile(served("a"), "6");
    EXPECT_NE(time, std::filesystem::last_write_time(served("a")));
}

} // namespace
