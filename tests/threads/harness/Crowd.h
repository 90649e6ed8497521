#ifndef THREADS_HARNESS_CROWD_H
#define THREADS_HARNESS_CROWD_H

#include "support/Codes.h"
#include "support/Live.h"

#include <functional>

/// A live test whose calls come from many threads at the same time.
class Crowd : public Live
{
protected:
    static constexpr unsigned kThreads = 32;

    /// Holds the reply to this command until all threads wait for one that is held so.
    void holdAt(const std::string& command);

    /// Runs the task on all threads, which start together. What they find wrong fails the test.
    static void run(const std::function<Lines(unsigned thread)>& task);

    /// How often the server held a session until all were there.
    std::size_t held();
};

/// What is wrong with a value, a file's content or records: nothing, or one text that says so.
template <typename Value>
Lines compare(const std::string& what, const Value& expected, const Value& actual)
{
    if (expected == actual) {
        return {};
    }
    return {what + " is " + testing::PrintToString(actual) + ", not " + testing::PrintToString(expected)};
}

inline Lines problem(const std::string& what, const testing::AssertionResult& result)
{
    return result ? Lines{} : Lines{what + ": " + result.message()};
}

#endif
