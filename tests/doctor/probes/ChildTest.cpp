// The processes in which probes run: they end, and stay small.
#include "doctor/Child.h"
#include "harness/Examined.h"

#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <vector>

namespace {

using Banner = Examined;

TEST_F(Banner, IsCutOffWhereItHasNoEnd)
{
    misbehave("GREETING=endless:hello");
    serve();
    askAbout("sftp" + url("/").substr(3));
    const doctor::Report report = examine(question);
    EXPECT_EQ(doctor::Ending::Garbled, report.contact.greeting.ending);
    EXPECT_EQ("FFFFFF", outlooksOf(predict(report)));
    EXPECT_EQ("no SSH server answers there (hello)", predict(report).back().reason);
    EXPECT_EQ(1U, sessions().size());
}

using doctor::Child;

std::chrono::steady_clock::time_point soon() { return std::chrono::steady_clock::now() + std::chrono::seconds(60); }

TEST(ChildTest, IsEndedWithItsObject)
{
    const SignalsHeld signals({SIGINT, SIGTERM, SIGHUP});
    pid_t process = -1;
    {
        const Child child([](int results) {
            const pid_t self = getpid();
            static_cast<void>(write(results, &self, sizeof self));
            for (;;) {
                pause();
            }
        });
        ASSERT_EQ(Child::Event::Result, child.wait(signals, soon()));
        ASSERT_EQ(static_cast<ssize_t>(sizeof process), read(child.results(), &process, sizeof process));
        EXPECT_EQ(Child::Event::Late, child.wait(signals, std::chrono::steady_clock::now()));
    }
    EXPECT_EQ(-1, kill(process, 0));
    EXPECT_EQ(ESRCH, errno);
}

TEST(ChildTest, GivesItsLastResultIfASignalCameToo)
{
    const SignalsHeld signals({SIGINT, SIGTERM, SIGHUP});
    Child child([](int results) {
        doctor::writeResult(results, {1});
        doctor::writeResult(results, {2, 3});
        kill(getppid(), SIGTERM);
        for (;;) {
            pause();
        }
    });
    pollfd signal = {signals.descriptor(), POLLIN, 0};
    ASSERT_EQ(1, poll(&signal, 1, -1));
    const Child::Outcome outcome = child.collect(signals, soon());
    EXPECT_EQ(Child::Event::Signal, outcome.event);
    EXPECT_EQ(SIGTERM, signals.take());
    EXPECT_EQ((std::vector<std::uint8_t>{2, 3}), outcome.result);
}

TEST(ChildTest, HasLimitedMemory)
{
    constexpr std::size_t kLittle = std::size_t{8} << 20;
    constexpr std::size_t kMuch = std::size_t{48} << 20;
    const auto takes = [](std::size_t bytes) {
        Child child([bytes](int) { std::vector<char>(bytes, 'x').data()[0] = 'y'; });
        return child.finish().empty();
    };
    EXPECT_TRUE(takes(kLittle));
    EXPECT_FALSE(takes(kMuch));
}

} // namespace
