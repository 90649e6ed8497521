// The playback and the program's own connect(), on which the session waits for the end of its connections: a connection
// that is counted must end, otherwise the fuzzer reports its own harness.
#include "harness/Playback.h"
#include "harness/OwnPorts.h"
#include "support/LoopbackPort.h"
#include "support/NextFunction.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <future>
#include <thread>

namespace {

std::atomic<int> interruptions{0};

// A socket, closed with the object.
class Socket
{
public:
    explicit Socket(int flags = 0) : m_descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0)) {}
    ~Socket() { close(m_descriptor); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int connectTo(std::uint16_t port) const
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        return connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }

    int state() const
    {
        tcp_info info = {};
        socklen_t length = sizeof info;
        getsockopt(m_descriptor, IPPROTO_TCP, TCP_INFO, &info, &length);
        return info.tcpi_state;
    }

private:
    const int m_descriptor;
};

TEST(Playback, ContinuesAfterASignal)
{
    interruptions = 2; // one for each of its threads
    Playback server;
    server.load("220 hello\r\n^content");
    allowPortsOnly(server.controlPort(), server.dataPort());
    for (const std::uint16_t port : {server.controlPort(), server.dataPort()}) {
        const Socket client;
        ASSERT_EQ(0, client.connectTo(port));
    }
    server.waitForEndOf(2);
    EXPECT_GE(0, interruptions);
}

TEST(OwnPorts, AConnectionIsEstablishedBeforeTheClientContinues)
{
    const LoopbackPort port;
    port.listen(0);
    allowPortsOnly(port.number(), 0);
    const Socket first; // fills the queue
    ASSERT_EQ(0, first.connectTo(port.number()));

    const unsigned before = ownConnections();
    const Socket second(SOCK_NONBLOCK);
    const std::future<void> room = std::async(std::launch::async, [&] {
        while (second.state() == TCP_CLOSE) {
            std::this_thread::yield();
        }
        close(port.accept());
    });
    EXPECT_EQ(-1, second.connectTo(port.number()));
    EXPECT_EQ(EINPROGRESS, errno);
    EXPECT_EQ(TCP_ESTABLISHED, second.state());
    EXPECT_EQ(before + 1, ownConnections());
}

TEST(OwnPorts, ARefusedConnectionDoesNotCount)
{
    const LoopbackPort port; // refuses connections
    allowPortsOnly(port.number(), 0);
    const unsigned before = ownConnections();
    for (const int flags : {0, int(SOCK_NONBLOCK)}) {
        const Socket client(flags);
        EXPECT_EQ(-1, client.connectTo(port.number()));
        EXPECT_EQ(ECONNREFUSED, errno);
    }
    EXPECT_EQ(before, ownConnections());
}

} // namespace

// Replaces the C library's, for the playback too.
extern "C" int poll(pollfd* watched, nfds_t count, int milliseconds)
{
    if (interruptions.fetch_sub(1) > 0) {
        errno = EINTR;
        return -1;
    }
    static auto* const next = nextFunction<int(pollfd*, nfds_t, int)>("poll");
    return next(watched, count, milliseconds);
}
