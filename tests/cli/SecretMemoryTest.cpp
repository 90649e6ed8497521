// A secret is overwritten before its memory is released.
#include "support/Memory.h"
#include "support/TemporaryFolder.h"

#include <base/WipedAtEnd.h>
#include <credentials/Netrc.h>
#include <credentials/Password.h>
#include <output/PasswordMask.h>

#include <gtest/gtest.h>

#include <sys/time.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

namespace {

constexpr char kPassword[] = "a password that is much longer than what a short text holds";
// Of "me:" and the password.
constexpr char kBase64[] = "bWU6YSBwYXNzd29yZCB0aGF0IGlz";

class SecretMemory : public testing::Test
{
protected:
    // A block with the beginning of the secret counts: a string that grew leaves no more behind.
    const memory::Observer onRelease = [this](std::string_view block) {
        ++released;
        const bool holdsSecret = block.find(std::string_view(kPassword, 12)) != std::string_view::npos ||
                                 block.find(std::string_view(kBase64, 12)) != std::string_view::npos;
        leaked += holdsSecret ? 1U : 0U;
    };
    unsigned released = 0;
    unsigned leaked = 0;
};

} // namespace

TEST_F(SecretMemory, IsFoundByThisTest)
{
    const memory::Watch watch(onRelease);
    std::string(kPassword).append(100, ' ');
    EXPECT_GE(leaked, 1U);
}

TEST_F(SecretMemory, OfAPasswordFileIsWiped)
{
    const TextFile file(std::string(kPassword) + "\n");
    const memory::Watch watch(onRelease);
    {
        std::string password;
        const WipedAtEnd wiped(password);
        readPasswordFile(file.path(), password);
        EXPECT_EQ(kPassword, password);
    }
    EXPECT_GE(released, 1U);
    EXPECT_EQ(0U, leaked);
}

TEST_F(SecretMemory, OfANetrcFileIsWiped)
{
    const TextFile file(std::string("machine host login me password \"") + kPassword + "\"\n");
    const memory::Watch watch(onRelease);
    {
        std::string user;
        std::string password;
        const WipedAtEnd wiped(password);
        EXPECT_TRUE(readNetrc(file.path(), "host", user, password));
        EXPECT_EQ(kPassword, password);
    }
    EXPECT_GE(released, 2U);
    EXPECT_EQ(0U, leaked);
}

TEST_F(SecretMemory, OfAMaskIsWiped)
{
    std::string password(kPassword);
    const memory::Watch watch(onRelease);
    {
        const PasswordMask mask("me", password);
        EXPECT_EQ("x", mask.hiddenIn("x"));
    }
    EXPECT_GE(released, 2U);
    EXPECT_EQ(0U, leaked);
}

// A resized window, or a stop and a continuation, must not end the prompt.
TEST(ReadSecretLine, ContinuesAfterASignal)
{
    static std::atomic<int> signals;
    signals = 0;
    struct sigaction counted = {};
    counted.sa_handler = [](int /*signal*/) { ++signals; };
    struct sigaction before = {};
    ASSERT_EQ(0, sigaction(SIGALRM, &counted, &before));
    std::array<int, 2> ends = {-1, -1};
    ASSERT_EQ(0, pipe(ends.data()));

    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    std::thread writer([&ends] {
        constexpr int kEnough = 20;
        while (signals < kEnough) {
            std::this_thread::yield();
        }
        EXPECT_EQ(7, write(ends[1], "secret\n", 7));
    });
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    const itimerval often{{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    std::string line;
    EXPECT_TRUE(readSecretLine(ends[0], -1, line));
    EXPECT_EQ("secret", line);
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    writer.join();
    sigaction(SIGALRM, &before, nullptr);
    close(ends[0]);
    close(ends[1]);
}
