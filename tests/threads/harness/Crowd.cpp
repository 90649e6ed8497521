#include "harness/Crowd.h"

#include <algorithm>
#include <condition_variable>
#include <future>
#include <mutex>

namespace {

/// Where threads wait until all of them are there.
class StartingLine
{
public:
    explicit StartingLine(unsigned threads) : m_missing(threads) {}

    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (--m_missing == 0) {
            m_complete.notify_all();
        }
        m_complete.wait(lock, [this] { return m_missing == 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_complete;
    unsigned m_missing;
};

} // namespace

void Crowd::holdAt(const std::string& command)
{
    config.faults.push_back(testserver::parseFault(command + "=meet:" + std::to_string(kThreads)));
}

void Crowd::run(const std::function<Lines(unsigned)>& task)
{
    StartingLine start(kThreads);
    std::vector<std::future<Lines>> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.push_back(std::async(std::launch::async, [&start, &task, i] {
            start.wait();
            return task(i);
        }));
    }
    for (unsigned i = 0; i < kThreads; ++i) {
        for (const std::string& line : threads[i].get()) {
            ADD_FAILURE() << "thread " << i << ": " << line;
        }
    }
}

std::size_t Crowd::held()
{
    const std::string line = "= " + std::to_string(kThreads) + " sessions met";
    std::size_t count = 0;
    for (const testserver::Transcript& transcript : sessions()) {
        count += static_cast<std::size_t>(std::count(transcript.begin(), transcript.end(), line));
    }
    return count;
}

Lines compareBytes(const std::string& what, const std::string& expected, const std::string& found)
{
    if (expected == found) {
        return {};
    }
    const auto [ours, unused] = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
    return {what + " of " + std::to_string(found.size()) + " bytes, in place of " + std::to_string(expected.size()) +
            ", differs from byte " + std::to_string(ours - expected.begin()) + " on"};
}
