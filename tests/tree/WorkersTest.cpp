// Tasks on threads: which are done, and when it is over.
#include <tree/Workers.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <stdexcept>

namespace {

using Verdict = Workers::Verdict;

void nothing() {}

} // namespace

TEST(TreeWorkers, DoAllTasksAndThoseThatTasksAdd)
{
    std::atomic<int> done{0};
    Workers workers(3, nothing);
    for (int i = 0; i < 10; ++i) {
        workers.add([&] {
            workers.add([&done] {
                ++done;
                return Verdict::Done;
            });
            ++done;
            return Verdict::Done;
        });
    }
    workers.run();
    EXPECT_EQ(20, done);
}

TEST(TreeWorkers, BeginNoTaskAfterAStop)
{
    std::atomic<int> done{0};
    Workers workers(1, nothing);
    for (int i = 0; i < 10; ++i) {
        workers.add([&done] { return ++done == 3 ? Verdict::Stop : Verdict::Done; });
    }
    workers.run();
    EXPECT_EQ(3, done);
}

TEST(TreeWorkers, TryATaskAgainWithFewer)
{
    std::atomic<int> tries{0};
    std::atomic<int> done{0};
    Workers workers(4, nothing);
    for (int i = 0; i < 10; ++i) {
        workers.add([&] {
            if (++tries <= 3) {
                return Verdict::Fewer;
            }
            ++done;
            return Verdict::Done;
        });
    }
    workers.run();
    EXPECT_EQ(10, done);
    EXPECT_EQ(13, tries);
}

TEST(TreeWorkers, HandOnWhatATaskThrows)
{
    Workers workers(2, nothing);
    workers.add([]() -> Verdict { throw std::runtime_error("out of order"); });
    EXPECT_THROW(workers.run(), std::runtime_error);
}

TEST(TreeWorkers, LeaveSignalsToTheOneThatWaits)
{
    bool isBlocked = false;
    Workers workers(1, nothing);
    workers.add([&isBlocked] {
        sigset_t mask;
        pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        isBlocked = sigismember(&mask, SIGINT) == 1;
        return Verdict::Done;
    });
    workers.run();
    EXPECT_TRUE(isBlocked);
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(0, sigismember(&mask, SIGINT));
}

TEST(TreeWorkers, ShowHowFarTheyAreAtTheEnd)
{
    int ticks = 0;
    Workers workers(1, [&ticks] { ++ticks; });
    workers.add([] { return Verdict::Done; });
    workers.run();
    EXPECT_LE(1, ticks);
}
