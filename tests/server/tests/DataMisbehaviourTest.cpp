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

/// How many bytes arrive, the reply behind them, and the transcript's last line.
struct Bad
{
    const char* id;
    const char* fault;
    std::size_t bytes;
    std::string reply;
    std::string last;
};

void PrintTo(const Bad& bad, std::ostream* stream) { *stream << bad.id; }

class EachDataMisbehaviour : public DataMisbehaviour, public testing::WithParamInterface<Bad>
{
};

TEST_P(EachDataMisbehaviour, IsWhatTheClientSees)
{
    config.stallLimit = std::chrono::milliseconds(50);
    const Seen seen = retrieve(GetParam().fault);
    EXPECT_TRUE(sameBytes(begin(GetParam().bytes), seen.data));
    EXPECT_EQ(GetParam().reply, seen.reply);
    EXPECT_EQ(GetParam().last, afterLogin().back());
}

const Bad kBad[] = {
    {"DropAfterNothing", "DATA=drop-after:0", 0, "426 transfer aborted", "< 426 transfer aborted"},
    {"DropAfterMoreThanThereIs", "DATA=drop-after:300001", kSize, "226 done", "< 226 done"},
    {"ClaimAfter", "DATA=claim-after:100000", 100000, "226 done", "< 226 done"},
    {"StallWithALimit", "DATA=stall-after:1000", 1000, "426 transfer aborted", "< 426 transfer aborted"},
    {"ReplyBehindTheData", "DONE=reply:451 broken", kSize, "451 broken", "< 451 broken"},
    {"EndInPlaceOfThatReply", "DONE=drop", kSize, "", "= 300000 bytes sent"},
    {"GarbageInTheClear", "DATA=garbage", kSize, "226 done", "< 226 done"},
};
INSTANTIATE_TEST_SUITE_P(Of, EachDataMisbehaviour, testing::ValuesIn(kBad),
                         [](const testing::TestParamInfo<Bad>& of) { return std::string(of.param.id); });

TEST_F(DataMisbehaviour, ResetAfter)
{
    const Seen seen = retrieve("DATA=reset-after:1000");
    // The reset may overtake the bytes.
    EXPECT_NE(std::string::npos, seen.data.rfind("(reset)"));
    EXPECT_EQ("426 transfer aborted", seen.reply);
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

TEST_F(DataMisbehaviour, OnlyTheNthDataConnection)
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

TEST_F(DataMisbehaviour, SlowLimitsTheRate)
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

TEST_F(DataMisbehaviour, Refuse)
{
    misbehave("LISTEN=refuse");
    serve();
    const auto client = login();
    EXPECT_TRUE(isRefused(client->extendedPassive()));
    EXPECT_EQ("150 data follows", client->ask("RETR a"));
    EXPECT_EQ("425 no data connection", client->line());
}

TEST_F(DataMisbehaviour, TheWaitForAClientEndsWithItsControlConnection)
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
