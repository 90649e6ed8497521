#ifndef SFTPCLIENT_SESSION_STOPSWITCH_H
#define SFTPCLIENT_SESSION_STOPSWITCH_H

#include <atomic>
#include <mutex>

namespace session {

/// Stops what runs in a session: whoever waits can wait for its descriptor as well, and whoever is inside libcurl,
/// which waits for some replies on its own, has its sockets shut down.
class StopSwitch
{
    struct Slot
    {
        std::atomic<int> socket{-1};
        bool taken = true; // guarded by m_taking
        Slot* next = nullptr;
    };

public:
    /// Throws `std::system_error` where the process has no descriptor left.
    StopSwitch();
    ~StopSwitch();
    StopSwitch(const StopSwitch&) = delete;
    StopSwitch& operator=(const StopSwitch&) = delete;

    /// May be called in a signal handler.
    void turnOn() noexcept;
    void turnOff() noexcept;
    /// Also as long as a turnOn() is still at work, whoever has turned it off meanwhile.
    bool isOn() const noexcept { return m_on.load() || m_cutting.load() > 0; }
    /// How often it has been turned on: who began before the last time is stopped, on or off.
    unsigned turns() const noexcept { return m_turns.load(); }

    /// Readable as long as the switch is on.
    int descriptor() const noexcept { return m_event; }

    /// Lets the switch shut a socket down as long as this object lives.
    /// REQUIRES: the number is the socket's for as long.
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
    std::atomic<Slot*> m_slots{nullptr}; // only ever grows: a signal handler walks along it
};

} // namespace session

#endif
