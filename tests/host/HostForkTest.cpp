#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <HostConfiguration.h>
#include <LogProxy.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace {

constexpr int kForks = 20;

/// Threads that repeat the same call as long as this object lives.
class BusyThreads
{
public:
    explicit BusyThreads(const std::function<void()>& work)
    {
        constexpr unsigned kThreads = 4;
        m_threads.reserve(kThreads);
        for (unsigned i = 0; i < kThreads; ++i) {
            m_threads.emplace_back([this, work] {
                while (!m_over) {
                    work();
                    ++m_done;
                }
            });
        }
        while (m_done == 0) {
            std::this_thread::yield();
        }
    }
    ~BusyThreads()
    {
        m_over = true;
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }
    BusyThreads(const BusyThreads&) = delete;
    BusyThreads& operator=(const BusyThreads&) = delete;

private:
    std::atomic<bool> m_over{false};
    std::atomic<unsigned> m_done{0};
    std::vector<std::thread> m_threads;
};

void log(const std::string& text) { LogProxy(1, "m", 0, "f()", 1) << 0 << text; }

// The wait status of a child that does this and exits: 0, or SIGALRM's if it hung.
int statusOfChildThat(const std::function<void()>& work)
{
    constexpr unsigned kHangsAfterSeconds = 60;
    const pid_t child = fork();
    if (child == 0) {
        alarm(kHangsAfterSeconds);
        work();
        _exit(0);
    }
    int status = -1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return status;
}

} // namespace

TEST(HostFork, ChildrenLogWhateverTheThreadsOfTheirParentDid)
{
    const LogCapture capture;
    {
        const BusyThreads threads([] { log("parent"); });
        for (int i = 0; i < kForks; ++i) {
            ASSERT_EQ(0, statusOfChildThat([] { log("child"); })) << i;
        }
    }
    log("afterwards");
    int children = 0;
    std::string last;
    for (const std::string& line : linesOf(capture.withoutTimes())) {
        last = line;
        children += line == "TIME debug m request=0 f():1 child" ? 1 : 0;
        ASSERT_EQ(0U, line.rfind("TIME debug m request=0 f():1 ", 0)) << line;
    }
    EXPECT_EQ(kForks, children);
    EXPECT_EQ("TIME debug m request=0 f():1 afterwards", last);
}

TEST(HostFork, ChildrenReadTheConfigurationWhateverTheThreadsOfTheirParentDid)
{
    const TemporaryFolder folder;
    HostConfiguration& configuration = HostConfiguration::instance();
    configuration.load(folder.write("a.ini", "[General]\nKey=a\n"));
    {
        const BusyThreads threads([&configuration] {
            configuration.reload();
            configuration.values();
        });
        for (int i = 0; i < kForks; ++i) {
            ASSERT_EQ(0, statusOfChildThat([&configuration] {
                          configuration.reload();
                          const bool isRead = configuration.values()->find("General", "Key") == "a";
                          isRead ? _exit(0) : _exit(1);
                      }))
                << i;
        }
    }
    configuration.reload();
    EXPECT_EQ("a", configuration.values()->find("General", "Key"));
}
