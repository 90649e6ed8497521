#include "harness/Served.h"

#include <operation/TransferClock.h>

#include <filesystem>
#include <memory>

using namespace std::chrono_literals;

namespace {

struct Hang
{
    std::string fault;
    Words form;
    int status;
    std::string result; // the last line
};

class TimeLimit : public ServedAsHost
{
protected:
    TimeLimit()
    {
        writeFile(served("file"), std::string(100000, 'x'));
        writeFile(local("file"), "");
        // More than the kernel's buffers take.
        std::filesystem::resize_file(local("file"), 64 << 20);
    }

    /// Runs all of them at once, each against its own server, and compares how they end.
    void expectEnds(const std::vector<Hang>& hangs, const std::vector<std::string>& options)
    {
        std::vector<std::unique_ptr<Case>> cases;
        cases.reserve(hangs.size());
        for (const Hang& hang : hangs) {
            cases.push_back(std::make_unique<Case>(*this, hang, options));
        }
        for (const std::unique_ptr<Case>& each : cases) {
            EXPECT_EQ(each->hang.status, each->command.wait()) << each->hang.form[0] << " " << each->hang.fault;
            const std::string err = contentOf(each->err.path());
            EXPECT_EQ(each->hang.result, lastLine(err)) << each->hang.fault;
            // No advice to wait for the server longer, or to try again, helps against a limit of the whole.
            EXPECT_FALSE(holds("--max-time", lastLine(err)) && holds("hint: ", err)) << err;
        }
    }

private:
    struct Case
    {
        Case(TimeLimit& test, const Hang& what, const std::vector<std::string>& options)
            : hang(what), server(test.configFor(what.fault)), command(setupFor(test, options))
        {
        }

        ProcessSetup setupFor(TimeLimit& test, const std::vector<std::string>& options) const
        {
            Words form = hang.form;
            for (std::string& word : form) {
                word = word.front() == '/' ? "ftp://backup@localhost:" + std::to_string(server.port()) + word : word;
            }
            form.insert(form.end(), options.begin(), options.end());
            ProcessSetup setup = test.setupOf(form);
            setup.out = "/dev/null";
            setup.err = err.path();
            return setup;
        }

        Hang hang;
        testserver::FtpServer server;
        TextFile err;
        Process command;
    };

    testserver::ServerConfig configFor(const std::string& fault)
    {
        config.faults = {testserver::parseFault(fault)};
        return config;
    }
};

constexpr char kStalled[] = "28 Timeout was reached: no byte was sent or received for 1 s (--stall-time)";
constexpr char kNotConnected[] =
    "28 Timeout was reached: connection and login did not finish within 4 s (--connect-time)";

} // namespace

TEST_F(TimeLimit, EndsAHangAtAnyStep)
{
    const std::string last = " (the server's last reply: ";
    const std::string check = "the size check before the download failed: ";
    expectEnds(
        {{"GREETING=stall", {"test", "/"}, 28, std::string("test: ") + kStalled},
         {"PASS=stall", {"rm", "/", "x"}, 28, std::string("rm: ") + kStalled + last + "331 password please)"},
         {"CWD=stall", {"mv", "/d/", "x", "y"}, 28, std::string("mv: ") + kStalled + last + "257 \"/\")"},
         {"rename=stall", {"mv", "/", "x", "y"}, 28, std::string("mv: ") + kStalled + last + "226 done)"},
         {"NLST=stall", {"ls", "/"}, 28, std::string("ls: ") + kStalled + last + "200 type set)"},
         {"SIZE=stall", {"get", "/file", "got"}, 255, "get: -1 " + check + kStalled + last + "200 type set)"},
         {"DATA=stall-after:1000",
          {"get", "/file", "got"},
          28,
          std::string("get: ") + kStalled + last + "150 data follows)"},
         {"DATA=stall-after:1000",
          {"put", "file", "/sent"},
          28,
          std::string("put: ") + kStalled + last + "150 send the data)"},
         {"DONE=stall", {"put", "file", "/sent"}, 28, std::string("put: ") + kStalled + last + "150 send the data)"},
         {"QUIT=stall", {"test", "/"}, 0, "test: 0 No error"}},
        {"--stall-time=1"});
}

TEST_F(TimeLimit, EndsAConnectionAttempt)
{
    expectEnds({{"GREETING=stall", {"ls", "/"}, 28, std::string("ls: ") + kNotConnected},
                {"TLS=stall",
                 {"ls", "/"},
                 28,
                 std::string("ls: ") + kNotConnected + " (the server's last reply: 234 TLS next)"},
                // Not a data connection: if one stalls in its handshake, libcurl returns 28 or 13, by chance.
                {"PWD=stall",
                 {"get", "/file", "got"},
                 255,
                 std::string("get: -1 the size check before the download failed: ") + kNotConnected +
                     " (the server's last reply: 230 logged in)"},
                {"GREETING=reply:421 too many users",
                 {"ls", "/"},
                 28,
                 "ls: 28 Timeout was reached (the server's last reply: 421 too many users)"}},
               {"--connect-time=4"});
}

TEST_F(TimeLimit, EndsTheWholeOperation)
{
    const std::string over = "28 Timeout was reached: the operation did not finish within 6 s (--max-time)";
    expectEnds({{"NLST=stall",
                 {"ls", "/", "--retry=9", "--retry-delay=0"},
                 28,
                 "ls: " + over + " (the server's last reply: 200 type set)"},
                {"SIZE=stall",
                 {"put", "file", "/sent", "--retry=9", "--retry-delay=0"},
                 28,
                 "put: 28 all was sent, but the check of its size on the server failed: " + over.substr(3) +
                     " (the server's last reply: 200 type set)"},
                {"TLS=stall", {"ls", "/"}, 28, "ls: " + over + " (the server's last reply: 234 TLS next)"},
                {"DATA=stall", {"ls", "/"}, 28, "ls: " + over + " (the server's last reply: 150 data follows)"},
                // A longer wait does not start.
                {"GREETING=drop",
                 {"ls", "/", "--retry=9", "--retry-delay=3600"},
                 56,
                 "ls: 56 Failure when receiving data from the peer"}},
               {"--max-time=6"});
}

TEST(TransferClock, LimitsConnectingToTheTimeLeft)
{
    const TransferClock::Time begin;
    EXPECT_EQ(20s, TransferClock({20s, 60s, 0s}, begin).connectingFrom(begin + 1h));
    const TransferClock clock({20s, 60s, 30s}, begin);
    EXPECT_EQ(20s, clock.connectingFrom(begin));
    EXPECT_EQ(5s, clock.connectingFrom(begin + 25500ms));
    EXPECT_EQ(1s, clock.connectingFrom(begin + 1h)) << "libcurl takes 0 for 300 s";
}

TEST(TransferClock, DetectsAStall)
{
    const TransferClock::Time begin;
    TransferClock clock({20s, 60s, 0s}, begin);
    EXPECT_FALSE(clock.isStalled(begin + 59s));
    EXPECT_TRUE(clock.isStalled(begin + 60s));
    clock.moves(begin + 59s);
    EXPECT_FALSE(clock.isStalled(begin + 118s));
    EXPECT_TRUE(clock.isStalled(begin + 119s));
    clock.begins(begin + 200s);
    EXPECT_FALSE(clock.isStalled(begin + 259s));
    EXPECT_FALSE(clock.isOver(begin + 1000h));
}

TEST(TransferClock, TimesEachConnection)
{
    const TransferClock::Time begin;
    TransferClock clock({20s, 60s, 0s}, begin);
    EXPECT_FALSE(clock.isConnected());
    clock.connected();
    EXPECT_TRUE(clock.isConnected());
    clock.begins(begin);
    EXPECT_FALSE(clock.isConnected());
}

TEST(TransferClock, DetectsTheEndOfTheTotal)
{
    const TransferClock::Time begin;
    TransferClock clock({20s, 60s, 10s}, begin);
    EXPECT_FALSE(clock.isOver(begin + 9999ms));
    EXPECT_TRUE(clock.isOver(begin + 10s));
    EXPECT_FALSE(clock.isOver(begin + 9s, 999ms));
    EXPECT_TRUE(clock.isOver(begin + 9s, 1s));
    clock.moves(begin + 5s);
    clock.begins(begin + 9s);
    EXPECT_TRUE(clock.isOver(begin + 10s)) << "it counts from the first transfer's begin";
}

TEST(TimeLimits, AreFiniteByDefault)
{
    const TimeLimits limits;
    EXPECT_EQ(20s, limits.connect);
    EXPECT_EQ(60s, limits.stall);
    EXPECT_EQ(0s, limits.whole);
}
