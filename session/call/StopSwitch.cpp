#include "call/StopSwitch.h"

#include <sched.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace session {

StopSwitch::StopSwitch() : m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_event < 0) {
        throw std::system_error(errno, std::generic_category(), "an event descriptor for Cancel() cannot be made");
    }
}

StopSwitch::~StopSwitch()
{
    for (Slot* slot = m_slots; slot != nullptr;) {
        Slot* const next = slot->next;
        delete slot;
        slot = next;
    }
    close(m_event);
}

void StopSwitch::turnOn() noexcept
{
    const int before = errno;
    // First, so that turnOff() clears it: an event left readable while the switch is off would end every wait at once.
    const std::uint64_t one = 1;
    static_cast<void>(write(m_event, &one, sizeof one) < 0);
    ++m_cutting;
    m_on = true;
    for (const Slot* slot = m_slots; slot != nullptr; slot = slot->next) {
        const int socket = slot->socket;
        if (socket >= 0) {
            shutdown(socket, SHUT_RDWR);
        }
    }
    ++m_turns; // before m_cutting drops, for calls that began meanwhile and were cut
    --m_cutting;
    errno = before;
}

void StopSwitch::turnOff() noexcept
{
    const int before = errno;
    m_on = false;
    std::uint64_t count = 0;
    static_cast<void>(read(m_event, &count, sizeof count) < 0);
    errno = before;
}

StopSwitch::Slot* StopSwitch::takeSlot()
{
    const std::lock_guard<std::mutex> taking(m_taking);
    for (Slot* slot = m_slots; slot != nullptr; slot = slot->next) {
        if (!slot->taken) {
            slot->taken = true;
            return slot;
        }
    }
    Slot* const slot = new Slot;
    slot->next = m_slots;
    m_slots = slot;
    return slot;
}

StopSwitch::Reach::Reach(StopSwitch& stop, int socket) : m_stop(stop), m_slot(stop.takeSlot())
{
    m_slot->socket = socket;
    // The switch may have walked the slots before the socket was there.
    if (stop.isOn()) {
        shutdown(socket, SHUT_RDWR);
    }
}

StopSwitch::Reach::~Reach()
{
    m_slot->socket = -1;
    // A turnOn() that is running may have read the number, which must not become another file's meanwhile.
    while (m_stop.m_cutting > 0) {
        sched_yield();
    }
    const std::lock_guard<std::mutex> taking(m_stop.m_taking);
    m_slot->taken = false;
}

} // namespace session
