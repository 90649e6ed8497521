#ifndef TESTSERVER_MEETINGPOINT_H
#define TESTSERVER_MEETINGPOINT_H

#include <cstdint>
#include <memory>
#include <mutex>

namespace testserver {

/// Where the sessions of a server wait until so many of them are there, again and again. Any number of threads may use
/// it at the same time.
class MeetingPoint
{
public:
    /// Waits until `sessions` of them wait, this one included. False when the client at the other end of `control`
    /// leaves before that; it is then no longer counted.
    bool wait(std::uint64_t sessions, int control);

private:
    class Meeting;

    std::mutex m_mutex;
    std::shared_ptr<Meeting> m_next;
};

} // namespace testserver

#endif
