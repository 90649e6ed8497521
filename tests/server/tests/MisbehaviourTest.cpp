// Each misbehaviour on the control connection, and what the client sees of it. tests/fault has them over TLS.
#include "ServerTest.h"

#include <algorithm>
#include <chrono>

namespace {

using testserver::TlsMode;

class Misbehaviour : public ServerTest
{
};

TEST_F(Misbehaviour, ReplyStandsInPlaceOfTheCommand)
{
    writeFile(served("a"), "a");
    misbehave("rm=reply:250 removed");
    serve();
    EXPECT_EQ("250 removed", login()->ask("rm a"));
    EXPECT_TRUE(sameLines(Lines({"> rm a", "< 250 removed"}), afterLogin()));
    EXPECT_TRUE(std::filesystem::exists(served("a")));
}

TEST_F(Misbehaviour, ReplyOfAnyBytes)
{
    misbehave("SIZE=reply:213-\\0\\xff\\r\\n213 1\\r\\n550 glued\\c");
    serve();
    {
        const auto client = login();
        client->send("SIZE a\r\n");
        client->finish();
        EXPECT_EQ(std::string("213-\0\xff\r\n213 1\r\n550 glued", 24), client->rest());
    }
    EXPECT_TRUE(sameLines(Lines({"> SIZE a", "< 213-\\x00\xff", "< 213 1", "< 550 glued"}), afterLogin()));
}

TEST_F(Misbehaviour, TheConversationGoesOnAfterAReply)
{
    misbehave("SIZE#1=reply:550 no");
    writeFile(served("a"), "a");
    serve();
    const auto client = login();
    EXPECT_EQ("550 no", client->ask("SIZE a"));
    EXPECT_EQ("213 1", client->ask("SIZE a"));
}

TEST_F(Misbehaviour, LastEndsItAfterAReply)
{
    misbehave("SIZE=last:213 1\\r\\n21\\c");
    serve();
    {
        const auto client = login();
        client->send("SIZE a\r\n");
        EXPECT_EQ("213 1\r\n21", client->rest());
    }
    EXPECT_TRUE(sameLines(Lines({"> SIZE a", "< 213 1", "< 21"}), afterLogin()));
}

TEST_F(Misbehaviour, EndlessLastsUntilTheClientLeaves)
{
    misbehave("NOOP=endless:200-more");
    serve();
    {
        const auto client = login();
        client->send("NOOP\r\n");
        for (int i = 0; i < 10000; ++i) {
            ASSERT_EQ("200-more", client->line());
        }
    }
    EXPECT_TRUE(sameLines(Lines({"> NOOP", "< 200-more"}), afterLogin()));
}

TEST_F(Misbehaviour, AStallCanHaveALimit)
{
    using Clock = std::chrono::steady_clock;
    config.stallLimit = std::chrono::milliseconds(50);
    misbehave("NOOP=stall");
    serve();
    const auto client = login();
    const auto before = Clock::now();
    client->send("NOOP\r\n");
    EXPECT_EQ("", client->rest());
    EXPECT_LE(std::chrono::milliseconds(50), Clock::now() - before);
}

TEST_F(Misbehaviour, DropEndsItWithoutAReply)
{
    misbehave("SIZE=drop");
    serve();
    {
        const auto client = login();
        client->send("SIZE a\r\n");
        EXPECT_EQ("", client->rest());
    }
    EXPECT_TRUE(sameLines(Lines{"> SIZE a"}, afterLogin()));
}

TEST_F(Misbehaviour, ResetIsAReset)
{
    misbehave("SIZE=reset");
    serve();
    const auto client = login();
    client->send("SIZE a\r\n");
    EXPECT_EQ("(reset)", client->rest());
}

TEST_F(Misbehaviour, StallLastsUntilTheClientLeaves)
{
    misbehave("SIZE=stall");
    serve();
    {
        const auto client = login();
        client->send("SIZE a\r\nNOOP\r\nQUIT\r\n");
        client->finish();
        EXPECT_EQ("", client->rest());
    }
    EXPECT_TRUE(sameLines(Lines{"> SIZE a"}, afterLogin()));
}

TEST_F(Misbehaviour, DelayPutsTheReplyOff)
{
    using Clock = std::chrono::steady_clock;
    misbehave("NOOP=delay:50");
    serve();
    const auto client = login();
    const auto before = Clock::now();
    EXPECT_EQ("200 ok", client->ask("NOOP"));
    EXPECT_LE(std::chrono::milliseconds(50), Clock::now() - before);
}

TEST_F(Misbehaviour, SplitKeepsTheBytes)
{
    misbehave("PWD=split");
    serve();
    {
        const auto client = login();
        EXPECT_EQ("257 \"/\"", client->ask("PWD"));
        EXPECT_EQ("200 ok", client->ask("NOOP"));
    }
    EXPECT_TRUE(sameLines(Lines({"> PWD", "< 257 \"/\"", "> NOOP", "< 200 ok"}), afterLogin()));
}

TEST_F(Misbehaviour, PadMakesTheReplyLong)
{
    misbehave("NOOP#1=pad:70000");
    serve();
    const auto client = login();
    EXPECT_EQ("200 ok" + std::string(69994, '.'), client->ask("NOOP"));
    EXPECT_EQ("200 ok", client->ask("NOOP"));
}

TEST_F(Misbehaviour, MeetWaitsForAllAgainAndAgain)
{
    misbehave("NOOP=meet:2");
    misbehave("PWD=meet:2");
    serve();
    {
        const auto first = login();
        const auto second = login();
        first->send("NOOP\r\n");
        EXPECT_EQ("257 \"/\"", second->ask("PWD"));
        EXPECT_EQ("200 ok", first->line());
        second->send("NOOP\r\n");
        EXPECT_EQ("257 \"/\"", first->ask("PWD"));
        EXPECT_EQ("200 ok", second->line());
        first->send("NOOP\r\n");
        first->finish();
        EXPECT_EQ("", first->rest());
    }
    for (const Lines& transcript : sessions()) {
        EXPECT_EQ(2, std::count(transcript.begin(), transcript.end(), "= 2 sessions met"));
    }
}

TEST_F(Misbehaviour, MeetDoesNotCountWhoLeaves)
{
    misbehave("NOOP=meet:2");
    serve();
    for (int visit = 0; visit < 3; ++visit) {
        const auto alone = login();
        alone->send("NOOP\r\n");
        alone->finish();
        EXPECT_EQ("", alone->rest());
    }
    for (const Lines& transcript : sessions()) {
        EXPECT_EQ("> NOOP", transcript.back());
    }
}

TEST_F(Misbehaviour, TheGreetingCanBeBadToo)
{
    misbehave("1/GREETING=reply:421 full");
    misbehave("2/GREETING=drop");
    misbehave("3/GREETING=reply:\\c");
    serve();
    EXPECT_EQ("421 full", RawClient(server->port()).line());
    EXPECT_EQ("", RawClient(server->port()).rest());
    {
        RawClient silent(server->port());
        silent.finish();
        EXPECT_EQ("", silent.rest());
    }
    EXPECT_EQ("220 ready", RawClient(server->port()).line());
    EXPECT_TRUE(sameSessions({{"< 421 full"}, {}, {"< "}, {"< 220 ready"}}, sessions()));
}

TEST_F(Misbehaviour, AfterAuthTheServerGoesOnInTheClear)
{
    misbehave("TLS=plain");
    serve();
    const auto client = login();
    EXPECT_EQ("234 TLS next", client->ask("AUTH TLS"));
    EXPECT_EQ("200 ok", client->ask("NOOP"));
}

TEST_F(Misbehaviour, AnImplicitServerGreetsInTheClear)
{
    config.tls = TlsMode::Implicit;
    misbehave("TLS=plain");
    serve();
    EXPECT_EQ("220 ready", RawClient(server->port()).line());
}

} // namespace
