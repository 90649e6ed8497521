// What the server replies to each command, over a bare connection in the clear.
#include "ServerTest.h"

#include <utility>
#include <vector>

namespace {

using testserver::TlsMode;
using Conversation = ServerTest;

// The transcript of a command that sends so many bytes over a data connection.
Lines inTheClear(const std::string& command, std::size_t bytes)
{
    return {"> EPSV",           "< 229 Entering Extended Passive Mode (|||PORT|)", "> " + command, "< 150 data follows",
            "= no TLS on data", "= " + std::to_string(bytes) + " bytes sent",      "< 226 done"};
}

TEST_F(Conversation, FromGreetingToQuit)
{
    serve();
    {
        RawClient client(server->port());
        EXPECT_EQ("220 ready", client.line());
        EXPECT_EQ("331 password please", client.ask("USER backup"));
        EXPECT_EQ("230 logged in", client.ask("PASS secret"));
        EXPECT_EQ("221 goodbye", client.ask("QUIT"));
        EXPECT_EQ("", client.rest());
    }
    EXPECT_TRUE(sameSessions({Lines({"< 220 ready", "> USER backup", "< 331 password please", "> PASS ****",
                                     "< 230 logged in", "> QUIT", "< 221 goodbye"})},
                             sessions()));
}

TEST_F(Conversation, WrongLogins)
{
    serve();
    RawClient client(server->port());
    client.line();
    EXPECT_EQ("530 log in first", client.ask("SIZE a"));
    EXPECT_EQ("530 login incorrect", client.ask("PASS secret"));
    client.ask("USER backup");
    EXPECT_EQ("530 login incorrect", client.ask("PASS Secret"));
    client.ask("USER somebody");
    EXPECT_EQ("530 login incorrect", client.ask("PASS secret"));
    EXPECT_EQ("530 log in first", client.ask("PWD"));
}

TEST_F(Conversation, TlsRequiredAtLogin)
{
    config.tlsRequiredAtLogin = true;
    serve();
    RawClient client(server->port());
    client.line();
    EXPECT_EQ("530 TLS first", client.ask("USER backup"));
    EXPECT_EQ("530 TLS first", client.ask("PASS secret"));
    EXPECT_EQ("504 unknown mechanism", client.ask("AUTH KERBEROS"));
    EXPECT_EQ("234 TLS next", client.ask("auth tls"));
}

TEST_F(Conversation, DeleIsAnAliasOfRm)
{
    writeFile(served("a"), "a");
    EXPECT_TRUE(goesLike({{"DELE a", "250 removed"}, {"DELE a", "550 no such file"}}));
    EXPECT_FALSE(std::filesystem::exists(served("a")));
}

TEST_F(Conversation, ALoginLeadsToTheStartDirectory)
{
    std::filesystem::create_directory(served("home"));
    writeFile(served("home/a"), "a");
    config.startDirectory = "/home";
    EXPECT_TRUE(goesLike({{"PWD", "257 \"/home\""}, {"SIZE a", "213 1"}, {"SIZE /a", "550 no such file"}}));
}

TEST_F(Conversation, NoTlsOnAPlainServer)
{
    config.tls = TlsMode::Plain;
    EXPECT_TRUE(goesLike({{"AUTH TLS", "502 no TLS here"},
                          {"PROT P", "536 protection refused"},
                          {"PROT C", "200 protection set"},
                          {"PBSZ 0", "200 PBSZ=0"}}));
}

TEST_F(Conversation, CommandsPipelinedAfterAuthAreDropped)
{
    serve();
    {
        RawClient client(server->port());
        client.line();
        client.send("AUTH TLS\r\nUSER backup\r\n");
        client.line();
        client.finish();
        client.rest();
    }
    EXPECT_TRUE(sameSessions({Lines({"< 220 ready", "> AUTH TLS", "< 234 TLS next"})}, sessions()));
}

TEST_F(Conversation, Directories)
{
    EXPECT_TRUE(goesLike({{"PWD", "257 \"/\""},
                          {"MKD a", "257 \"/a\" made"},
                          {"MKD a", "550 cannot be made"},
                          {"MKD b/c", "550 cannot be made"},
                          {"CWD b", "550 no such directory"},
                          {"CWD a", "250 directory changed"},
                          {"MKD q\"q", "257 \"/a/q\"\"q\" made"},
                          {"CWD q\"q", "250 directory changed"},
                          {"PWD", "257 \"/a/q\"\"q\""},
                          {"CDUP", "250 directory changed"},
                          {"CWD ../..", "250 directory changed"},
                          {"PWD", "257 \"/\""}}));
    EXPECT_TRUE(std::filesystem::is_directory(served("a")));
}

TEST_F(Conversation, RenamingAndRemoving)
{
    std::filesystem::create_directory(served("sub"));
    writeFile(served("a"), "a");
    writeFile(served("sub/b"), "b");
    EXPECT_TRUE(goesLike({{"rename a c", "250 renamed"},
                          {"RENAME /sub/b /d", "250 renamed"},
                          {"rename missing x", "550 no such file"},
                          {"rename c sub", "553 cannot be renamed"},
                          {"rename c no/dir", "553 cannot be renamed"},
                          {"rename c", "501 two names, please"},
                          {"rename c ", "501 two names, please"},
                          {"rename  c", "501 two names, please"},
                          {"rename c d e", "501 two names, please"},
                          {"rename", "501 two names, please"},
                          {"rm d", "250 removed"},
                          {"rm d", "550 no such file"},
                          {"rm sub", "550 no such file"},
                          {"rm", "550 no such file"}}));
    EXPECT_EQ("a", contentOf(served("c")));
    EXPECT_FALSE(std::filesystem::exists(served("d")));
}

TEST_F(Conversation, NothingOutsideTheFolderIsServed)
{
    writeFile(folder.file("outside"), "secret");
    std::filesystem::create_symlink(folder.file("outside"), served("link"));
    std::filesystem::create_symlink(folder.file("new"), served("dangling"));
    writeFile(served("a"), "a");
    EXPECT_TRUE(goesLike({{"SIZE ../outside", "550 no such file"},
                          {"RETR ../outside", "550 no such file"},
                          {"SIZE link", "550 no such file"},
                          {"RETR link", "550 no such file"},
                          {"STOR link", "553 cannot be written"},
                          {"STOR dangling", "553 cannot be written"},
                          {"rm link", "550 no such file"},
                          {"rename a link", "550 no such file"},
                          {"rm ../outside", "550 no such file"}}));
    EXPECT_EQ("secret", contentOf(folder.file("outside")));
    EXPECT_FALSE(std::filesystem::exists(folder.file("new")));
}

TEST_F(Conversation, MinorCommands)
{
    EXPECT_TRUE(goesLike({{"NOOP", "200 ok"},
                          {"SYST", "215 UNIX Type: L8"},
                          {"OPTS UTF8 ON", "200 ok"},
                          {"TYPE I", "200 type set"},
                          {"SITE a", "500 unknown command"},
                          {"", "500 unknown command"}}));
}

TEST_F(Conversation, RestartPoints)
{
    EXPECT_TRUE(goesLike({{"REST 0", "350 restart marked"},
                          {"REST 9223372036854775807", "350 restart marked"},
                          {"REST 9223372036854775808", "501 no number"},
                          {"REST -1", "501 no number"},
                          {"REST x", "501 no number"},
                          {"REST", "501 no number"},
                          {"REST 5x", "501 no number"}}));
}

TEST_F(Conversation, Features)
{
    serve();
    {
        const auto client = login();
        EXPECT_EQ("211-features", client->ask("FEAT"));
        client->finish();
        EXPECT_EQ(" AUTH TLS\r\n EPSV\r\n MDTM\r\n MFMT\r\n MLST type*;size*;modify*;\r\n PBSZ\r\n PROT\r\n REST "
                  "STREAM\r\n SIZE\r\n211 end\r\n",
                  client->rest());
    }
    EXPECT_TRUE(sameLines(
        Lines({"> FEAT", "< 211-features", "<  AUTH TLS", "<  EPSV", "<  MDTM", "<  MFMT",
               "<  MLST type*;size*;modify*;", "<  PBSZ", "<  PROT", "<  REST STREAM", "<  SIZE", "< 211 end"}),
        afterLogin()));
}

TEST_F(Conversation, RenamingInTwoSteps)
{
    writeFile(served("a b"), "content");
    std::filesystem::create_directory(served("d"));
    EXPECT_TRUE(goesLike({{"RNTO x", "503 RNFR first"},
                          {"RNFR missing", "550 no such file"},
                          {"RNTO x", "503 RNFR first"},
                          {"RNFR a b", "350 the new name, please"},
                          {"RNTO d/c d", "250 renamed"},
                          {"RNTO e", "503 RNFR first"},
                          {"RNFR d", "350 the new name, please"},
                          {"RNTO no/such", "553 cannot be renamed"},
                          {"RNFR d", "350 the new name, please"},
                          {"RNTO f", "250 renamed"}}));
    EXPECT_TRUE(std::filesystem::is_regular_file(served("f/c d")));
}

TEST_F(Conversation, RemovingDirectories)
{
    std::filesystem::create_directories(served("d/e"));
    writeFile(served("a"), "");
    EXPECT_TRUE(goesLike({{"RMD d", "550 cannot be removed"},
                          {"RMD d/e", "250 removed"},
                          {"RMD d", "250 removed"},
                          {"RMD a", "550 cannot be removed"}}));
    EXPECT_FALSE(std::filesystem::exists(served("d")));
    EXPECT_TRUE(std::filesystem::exists(served("a")));
}

TEST_F(Conversation, TransfersNeedAPort)
{
    writeFile(served("a"), "a");
    serve();
    {
        const auto client = login();
        EXPECT_EQ("150 data follows", client->ask("RETR a"));
        EXPECT_EQ("425 no data connection", client->line());
        EXPECT_EQ("550 no such directory", client->ask("NLST missing"));
        EXPECT_EQ("553 cannot be written", client->ask("STOR no/dir"));
    }
    EXPECT_TRUE(sameLines(Lines({"> RETR a", "< 150 data follows", "< 425 no data connection", "> NLST missing",
                                 "< 550 no such directory", "> STOR no/dir", "< 553 cannot be written"}),
                          afterLogin()));
}

TEST_F(Conversation, ADataConnectionInTheClear)
{
    writeFile(served("b"), "the content");
    writeFile(served("a"), "");
    std::filesystem::create_directory(served("c"));
    serve();
    {
        const auto client = login();
        std::uint16_t port = client->extendedPassive();
        EXPECT_EQ(0U, client->ask("NLST").find("150 "));
        EXPECT_EQ("a\r\nb\r\nc\r\n", RawClient(port).rest());
        EXPECT_EQ("226 done", client->line());
        port = client->extendedPassive();
        client->ask("LIST");
        EXPECT_EQ("-rw-r--r-- 1 backup backup 0 Jan 01 00:00 a\r\n"
                  "-rw-r--r-- 1 backup backup 11 Jan 01 00:00 b\r\n"
                  "drwxr-xr-x 1 backup backup 0 Jan 01 00:00 c\r\n",
                  RawClient(port).rest());
        EXPECT_EQ("226 done", client->line());
        port = client->extendedPassive();
        client->ask("MLSD");
        EXPECT_EQ("type=file;size=0;modify=20260101000000; a\r\n"
                  "type=file;size=11;modify=20260101000000; b\r\n"
                  "type=dir;modify=20260101000000; c\r\n",
                  RawClient(port).rest());
        EXPECT_EQ("226 done", client->line());
        client->ask("REST 4");
        port = client->extendedPassive();
        client->ask("RETR b");
        EXPECT_EQ("content", RawClient(port).rest());
        EXPECT_EQ("226 done", client->line());
    }
    EXPECT_TRUE(sameLines(inTheClear("NLST", 9) + inTheClear("LIST", 136) + inTheClear("MLSD", 122) +
                              Lines{"> REST 4", "< 350 restart marked"} + inTheClear("RETR b", 7),
                          afterLogin()));
}

TEST_F(Conversation, AppendingAndReplacing)
{
    serve();
    const auto client = login();
    const auto upload = [&client](const std::string& command, const std::string& content) {
        const std::uint16_t port = client->extendedPassive();
        client->ask(command);
        RawClient data(port);
        data.send(content);
        data.finish();
        data.rest();
        return client->line();
    };
    EXPECT_EQ("226 done", upload("STOR a", "the long content"));
    EXPECT_EQ("226 done", upload("STOR a", "short"));
    EXPECT_EQ("short", contentOf(served("a")));
    EXPECT_EQ("226 done", upload("APPE a", "er"));
    EXPECT_EQ("shorter", contentOf(served("a")));
}

// As on a disk, where the file that is received has no name any more.
TEST_F(Conversation, AFileDeletedWhileItArrivesDoesNotComeBack)
{
    serve();
    const auto client = login();
    const std::uint16_t port = client->extendedPassive();
    EXPECT_EQ("150 send the data", client->ask("STOR a"));
    EXPECT_EQ("250 removed", login()->ask("DELE a"));
    RawClient data(port);
    data.send("content");
    data.finish();
    data.rest();
    EXPECT_EQ("226 done", client->line());
    EXPECT_FALSE(std::filesystem::exists(served("a")));
}

TEST_F(Conversation, ALineOfMoreThan64KibibytesEndsIt)
{
    serve();
    {
        const auto client = login();
        client->send(std::string(100000, 'x'));
        client->rest();
    }
    EXPECT_TRUE(sameLines(Lines{}, afterLogin()));
}

TEST_F(Conversation, AStoppedServerIsGone)
{
    serve();
    const std::uint16_t port = server->port();
    EXPECT_FALSE(isRefused(port));
    server->stop();
    server.reset();
    EXPECT_TRUE(isRefused(port));
}

} // namespace
