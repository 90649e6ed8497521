#ifndef SFTPCLIENT_CLI_DOCTOR_CHILD_H
#define SFTPCLIENT_CLI_DOCTOR_CHILD_H

#include "base/Signals.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace doctor {

/// A process for what a server may keep from ending, or make large: it prints nothing, its memory is limited, and it
/// ends with this object at the latest.
class Child
{
public:
    /// Runs `work` with the end of a pipe for its results.
    explicit Child(const std::function<void(int results)>& work);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    int results() const { return m_results; }

    /// Waits for its end. Returns how it ended, if that was not the end of its work.
    std::string finish();

    enum class Event
    {
        Result, ///< there is something to read, or the end
        Signal,
        Late
    };

    /// Waits for what comes first.
    Event wait(const SignalsHeld& signals, std::chrono::steady_clock::time_point end) const;

    /// The last result that the work has given by `end`, and how it ended, if that was not the end of its work.
    struct Outcome
    {
        Event event = Event::Result;
        std::vector<std::uint8_t> result;
        std::string failure;
    };
    Outcome collect(const SignalsHeld& signals, std::chrono::steady_clock::time_point end);

private:
    bool takePart();
    void takeResults();

    pid_t m_process = -1;
    int m_results = -1;
    std::vector<std::uint8_t> m_bytes; // of a result that is not whole yet
    std::vector<std::uint8_t> m_result;
};

/// For the work of a child: a result, which takes the place of those before. Throws `std::system_error`.
void writeResult(int results, const std::vector<std::uint8_t>& bytes);

} // namespace doctor

#endif
