#ifndef TESTSERVER_OPENSOCKETS_H
#define TESTSERVER_OPENSOCKETS_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>

namespace testserver {

/// The sockets that one session has open, so that another thread can end what it is doing.
class OpenSockets
{
public:
    void add(int socket);
    void remove(int socket);

    /// Shuts all sockets down, those added later too, and ends every wait.
    void interrupt();

    /// Waits; false when interrupted meanwhile.
    bool wait(std::chrono::microseconds time);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::set<int> m_sockets;
    bool m_interrupted = false;
};

} // namespace testserver

#endif
