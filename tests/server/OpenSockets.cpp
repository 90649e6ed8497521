#include "OpenSockets.h"

#include <sys/socket.h>

namespace testserver {

void OpenSockets::add(int socket)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sockets.insert(socket);
    if (m_interrupted) {
        ::shutdown(socket, SHUT_RDWR);
    }
}

void OpenSockets::remove(int socket)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sockets.erase(socket);
}

void OpenSockets::interrupt()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_interrupted = true;
    for (const int socket : m_sockets) {
        ::shutdown(socket, SHUT_RDWR);
    }
    m_changed.notify_all();
}

bool OpenSockets::wait(std::chrono::microseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_for(lock, time, [this] { return m_interrupted; });
}

} // namespace testserver
