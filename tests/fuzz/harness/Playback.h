#ifndef FUZZ_HARNESS_PLAYBACK_H
#define FUZZ_HARNESS_PLAYBACK_H

#include "support/LoopbackPort.h"

#include <Certificates.h>
#include <TlsContexts.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A server that sends what it is given, whatever the client sends.
///
/// A script is replies, with a "~" between two of them: the first greets, and one more goes out whenever the client has
/// sent something, or is silent. When there are no more, the connection closes. "@" in a reply is the port of the data
/// connection, "#" the same in the format of PASV. A "!" at the end of a reply is not sent: TLS begins in
/// its place. What follows a "^" goes over each data connection, which then closes, and a "!" there begins TLS first;
/// whatever the client sends there is dropped.
class Playback
{
public:
    Playback();
    ~Playback();
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    std::uint16_t controlPort() const { return m_control.number(); }
    std::uint16_t dataPort() const { return m_data.number(); }

    /// The server's certificate.
    const std::string& certificatePem() const { return m_certificate.certificatePem; }

    /// Sets what the following connections receive.
    void load(const std::string& script);

    /// Waits until so many connections, since the program began, have come to their end.
    void waitForEndOf(unsigned connections);

private:
    void countEnd();
    void serveControl();
    void serveData();
    void play(int connection);

    const testserver::Certificate m_certificate;
    const testserver::TlsContexts m_tls;
    const LoopbackPort m_control;
    const LoopbackPort m_data;
    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::vector<std::string> m_replies;
    std::string m_content;
    unsigned m_endedConnections = 0;
    std::thread m_controlThread;
    std::thread m_dataThread;
};

#endif
