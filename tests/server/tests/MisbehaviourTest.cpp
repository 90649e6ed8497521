// Each misbehaviour on the control connection, and what the client sees of it. tests/fault has them over TLS.
#include "ServerTest.h"

#include <algorithm>
#include <chrono>

namespace {

using testserver::TlsMode;

class Misbehaviour : public ServerTest
{
};

/// What a client that sends one command receives, and what the transcript records.
struct Bad
{
    const char* id;
    const char* fault;
    std::string said;
    std::string heard;
    Lines transcript;
};

void PrintTo(const Bad& bad, std::ostream* stream) { *stream << bad.id; }

class EachMisbehaviour : public Misbehaviour, public testing::WithParamInterface<Bad>
{
};

TEST_P(EachMisbehaviour, IsWhatTheClientSees)
{
    writeFile(served("a"), "a");
    misbehave(GetParam().fault);
    serve();
    {
        const auto client = login();
        client->send(GetParam().said);
        client->finish();
        EXPECT_TRUE(sameText(GetParam().heard, client->rest()));
    }
    EXPECT_TRUE(sameLines(GetParam().transcript, afterLogin()));
    EXPECT_TRUE(exists(served("a")));
}

const std::string kPadded = "200 ok" + std::string(69994, '.');

const Bad kBad[] = {
    {"ReplyInPlaceOfTheCommand", "rm=reply:250 removed", "rm a\r\n", "250 removed\r\n", {"> rm a", "< 250 removed"}},
    {"ReplyOfAnyBytes",
     "SIZE=reply:213-\\0\\xff\\r\\n213 1\\r\\n550 glued\\c",
     "SIZE a\r\n",
     std::string("213-\0\xff\r\n213 1\r\n550 glued", 24),
     {"> SIZE a", "< 213-\\x00\xff", "< 213 1", "< 550 glued"}},
    {"ReplyOnce",
     "SIZE#1=reply:550 no",
     "SIZE a\r\nSIZE a\r\n",
     "550 no\r\n213 1\r\n",
     {"> SIZE a", "< 550 no", "> SIZE a", "< 213 1"}},
    {"Last", "SIZE=last:213 1\\r\\n21\\c", "SIZE a\r\nNOOP\r\n", "213 1\r\n21", {"> SIZE a", "< 213 1", "< 21"}},
    {"Drop", "SIZE=drop", "SIZE a\r\nNOOP\r\n", "", {"> SIZE a"}},
    {"Reset", "SIZE=reset", "SIZE a\r\nNOOP\r\n", "(reset)", {"> SIZE a"}},
    {"StallUntilTheClientLeaves", "SIZE=stall", "SIZE a\r\nNOOP\r\nQUIT\r\n", "", {"> SIZE a"}},
    {"SplitKeepsTheBytes",
     "PWD=split",
     "PWD\r\nNOOP\r\n",
     "257 \"/\"\r\n200 ok\r\n",
     {"> PWD", "< 257 \"/\"", "> NOOP", "< 200 ok"}},
    {"PadMakesTheReplyLong",
     "NOOP#1=pad:70000",
     "NOOP\r\nNOOP\r\n",
     kPadded + "\r\n200 ok\r\n",
     {"> NOOP", "< " + kPadded, "> NOOP", "< 200 ok"}},
};
INSTANTIATE_TEST_SUITE_P(Of, EachMisbehaviour, testing::ValuesIn(kBad),
                         [](const testing::TestParamInfo<Bad>& of) { return std::string(of.param.id); });

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

TEST_F(Misbehaviour, DelayDefersTheReply)
{
    using Clock = std::chrono::steady_clock;
    misbehave("NOOP=delay:50");
    serve();
    const auto client = login();
    const auto before = Clock::now();
    EXPECT_EQ("200 ok", client->ask("NOOP"));
    EXPECT_LE(std::chrono::milliseconds(50), Clock::now() - before);
}

TEST_F(Misbehaviour, MeetWaitsForAllRepeatedly)
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

TEST_F(Misbehaviour, MeetDoesNotCountClientsThatLeave)
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

TEST_F(Misbehaviour, TheGreetingCanMisbehaveToo)
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

TEST_F(Misbehaviour, AfterAuthTheServerContinuesInTheClear)
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
