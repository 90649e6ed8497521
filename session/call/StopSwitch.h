#ifndef SFTPCLIENT_SESSION_STOPSWITCH_H
#define SFTPCLIENT_SESSION_STOPSWITCH_H

#include <atomic>
#include <mutex>

namespace session {

/// Stops what runs in a session. Threads that wait include its descriptor in their poll; threads inside libcurl, which
/// waits for some replies by itself, get their sockets shut down.
class StopSwitch
{
    struct Slot
    {
        std::atomic<int> socket{-1};
        bool taken = true; // guarded by m_taking
        Slot* next = nullptr;
    };

public:
    /// Throws `std::system_error` if the process has no file descriptor left.
    StopSwitch();
    ~StopSwitch();
    StopSwitch(const StopSwitch&) = delete;
    StopSwitch& operator=(const StopSwitch&) = delete;

    /// Safe in a signal handler.
    void turnOn() noexcept;
    void turnOff() noexcept;
    /// Also true while a turnOn() is still at work, even if another thread has turned it off meanwhile.
    bool isOn() const noexcept { return m_on.load() || m_cutting.load() > 0; }
    /// How often it has been turned on. A call that began before the last time is stopped, even if it is off again.
    unsigned turns() const noexcept { return m_turns.load(); }

    /// Readable while the switch is on.
    int descriptor() const noexcept { return m_event; }

    /// Lets the switch shut a socket down while this object lives.
    /// REQUIRES: the descriptor stays open until then.
    class Reach
    {
    public:
        Reach(StopSwitch& stop, int socket);
        ~Reach();
        Reach(const Reach&) = delete;
        Reach& operator=(const Reach&) = delete;

    private:
        StopSwitch& m_stop;
        Slot* m_slot;
    };

private:
    Slot* takeSlot();

    int m_event;
    std::atomic<bool> m_on{false};
    std::atomic<unsigned> m_turns{0};
    std::atomic<int> m_cutting{0};
    std::mutex m_taking;
    std::atomic<Slot*> m_slots{nullptr}; // only grows: a signal handler walks it
};

} // namespace session

#endif
