#include "harness/Crowd.h"

#include <algorithm>
#include <future>

void Crowd::holdAt(const std::string& command) { misbehave(command + "=meet:" + std::to_string(kThreads)); }

void Crowd::run(const std::function<Lines(unsigned)>& task)
{
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    std::vector<std::future<Lines>> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.push_back(std::async(std::launch::async, [started, &task, i] {
            started.wait();
            return task(i);
        }));
    }
    start.set_value();
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
