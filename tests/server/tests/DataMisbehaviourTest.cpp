// Each misbehaviour on a data connection, and what the client sees of it. tests/fault has them over TLS.
#include "ServerTest.h"

#include <chrono>

namespace {

constexpr std::size_t kSize = 300000;

// A data connection in the clear for a file of 300000 bytes.
class DataMisbehaviour : public ServerTest
{
protected:
    DataMisbehaviour() { writeFile(served("a"), randomBytes(kSize)); }

    struct Seen
    {
        std::string data;
        std::string reply;
    };

    Seen retrieve(const std::string& fault)
    {
        misbehave(fault);
        serve();
        const auto client = login();
        RawClient data(client->extendedPassive());
        client->ask("RETR a");
        const std::string bytes = data.rest();
        return {bytes, client->line()};
    }

    std::string begin(std::size_t count) const { return contentOf(served("a")).substr(0, count); }
};

TEST_F(DataMisbehaviour, DropAfter)
{
    const Seen seen = retrieve("DATA=drop-after:100000");
    EXPECT_TRUE(sameBytes(begin(100000), seen.data));
    EXPECT_EQ("426 transfer aborted", seen.reply);
    EXPECT_TRUE(
        sameLines(Lines({"> EPSV", "< 229 Entering Extended Passive Mode (|||PORT|)", "> RETR a", "< 150 data follows",
                         "= no TLS on data", "= 100000 bytes sent", "< 426 transfer aborted"}),
                  afterLogin()));
}

TEST_F(DataMisbehaviour, DropAfterNothing)
{
    const Seen seen = retrieve("DATA=drop-after:0");
    EXPECT_EQ("", seen.data);
    EXPECT_EQ("426 transfer aborted", seen.reply);
}

TEST_F(DataMisbehaviour, DropAfterMoreThanThereIsDropsNothing)
{
    const Seen seen = retrieve("DATA=drop-after:300001");
    EXPECT_TRUE(sameBytes(begin(kSize), seen.data));
    EXPECT_EQ("226 done", seen.reply);
}

TEST_F(DataMisbehaviour, ResetAfter)
{
    const Seen seen = retrieve("DATA=reset-after:1000");
    // The reset may overtake the bytes.
    EXPECT_NE(std::string::npos, seen.data.rfind("(reset)"));
    EXPECT_EQ("426 transfer aborted", seen.reply);
}

TEST_F(DataMisbehaviour, ClaimAfter)
{
    const Seen seen = retrieve("DATA=claim-after:100000");
    EXPECT_TRUE(sameBytes(begin(100000), seen.data));
    EXPECT_EQ("226 done", seen.reply);
}

TEST_F(DataMisbehaviour, Close)
{
    misbehave("DATA=close");
    serve();
    const auto client = login();
    {
        RawClient data(client->extendedPassive());
        client->ask("RETR a");
        EXPECT_EQ("", data.rest());
    }
    EXPECT_EQ("426 transfer aborted", client->line());
}

TEST_F(DataMisbehaviour, TheNthDataConnectionOnly)
{
    misbehave("DATA#2=drop-after:5");
    serve();
    const auto client = login();
    for (const std::size_t expected : {kSize, std::size_t{5}, kSize}) {
        RawClient data(client->extendedPassive());
        client->ask("RETR a");
        EXPECT_EQ(expected, data.rest().size()) << "in turn";
        client->line();
    }
}

TEST_F(DataMisbehaviour, SlowTakesItsTime)
{
    using Clock = std::chrono::steady_clock;
    const auto before = Clock::now();
    const Seen seen = retrieve("DATA=slow:3000000");
    EXPECT_LE(std::chrono::milliseconds(100), Clock::now() - before);
    EXPECT_TRUE(sameBytes(begin(kSize), seen.data));
    EXPECT_EQ("226 done", seen.reply);
}

TEST_F(DataMisbehaviour, StallAfter)
{
    misbehave("DATA=stall-after:1000");
    serve();
    const auto client = login();
    {
        RawClient data(client->extendedPassive());
        client->ask("RETR a");
        data.finish();
        EXPECT_TRUE(sameBytes(begin(1000), data.rest()));
    }
    EXPECT_EQ("426 transfer aborted", client->line());
}

TEST_F(DataMisbehaviour, StallAfterStopsReadingAnUpload)
{
    misbehave("DATA=stall-after:1000");
    serve();
    {
        const auto client = login();
        RawClient data(client->extendedPassive());
        client->ask("STOR up");
        data.send(randomBytes(kSize));
        client->finish();
        EXPECT_EQ("426 transfer aborted", client->line()) << "the control connection has told that the client left";
    }
    EXPECT_EQ(1000U, contentOf(served("up")).size());
}

TEST_F(DataMisbehaviour, AStallCanHaveALimit)
{
    config.stallLimit = std::chrono::milliseconds(50);
    const Seen seen = retrieve("DATA=stall-after:1000");
    EXPECT_TRUE(sameBytes(begin(1000), seen.data));
    EXPECT_EQ("426 transfer aborted", seen.reply);
}

TEST_F(DataMisbehaviour, TheReplyAfterTheDataCanBeBadToo)
{
    const Seen seen = retrieve("DONE=reply:451 broken");
    EXPECT_TRUE(sameBytes(begin(kSize), seen.data));
    EXPECT_EQ("451 broken", seen.reply);
    EXPECT_EQ("< 451 broken", afterLogin().back());
}

TEST_F(DataMisbehaviour, TheConnectionCanEndInPlaceOfTheReplyAfterTheData)
{
    EXPECT_EQ("", retrieve("DONE=drop").reply);
    EXPECT_EQ("= 300000 bytes sent", afterLogin().back());
}

TEST_F(DataMisbehaviour, Refuse)
{
    misbehave("LISTEN=refuse");
    serve();
    const auto client = login();
    EXPECT_TRUE(isRefused(client->extendedPassive()));
    EXPECT_EQ("150 data follows", client->ask("RETR a"));
    EXPECT_EQ("425 no data connection", client->line());
}

TEST_F(DataMisbehaviour, GarbageInTheClearWouldBeData)
{
    EXPECT_TRUE(sameBytes(begin(kSize), retrieve("DATA=garbage").data));
}

TEST_F(DataMisbehaviour, AClientThatNeverComesEndsWithItsControlConnection)
{
    serve();
    {
        const auto client = login();
        client->extendedPassive();
        EXPECT_EQ("150 data follows", client->ask("RETR a"));
    }
    EXPECT_EQ("< 425 no data connection", afterLogin().back());
}

} // namespace
