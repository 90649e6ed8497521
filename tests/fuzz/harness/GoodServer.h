#ifndef FUZZ_HARNESS_GOODSERVER_H
#define FUZZ_HARNESS_GOODSERVER_H

#include <cstddef>
#include <deque>
#include <string>

/// What a good server would reply now on a control connection, from what the client has sent over it. It has no TLS.
class GoodServer
{
public:
    /// Notes what the client has sent.
    void hear(const std::string& bytes);

    /// The reply that is due, and empty if none is: the greeting, one to the oldest command without, or the end of a
    /// transfer. `size` is that of a file.
    std::string reply(std::size_t size);

    /// Notes that another reply was sent in its place.
    void sent(const std::string& reply);

private:
    std::string m_unended;                  // the beginning of a command
    std::deque<std::string> m_commands{""}; // without a reply; "" waits for the greeting
    bool m_isTransferring = false;
};

#endif
