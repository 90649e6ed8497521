// The network in which the fuzzed clients run: a wait takes no time, and reaches nothing but the peer.
#include "harness/Network.h"
#include "harness/Playback.h"
#include "support/LoopbackPort.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

// A socket, closed with the object.
class Socket
{
public:
    Socket() : m_descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}
    ~Socket() { close(m_descriptor); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int connectTo(std::uint16_t port, const char* host = "127.0.0.1") const
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        inet_pton(AF_INET, host, &address.sin_addr);
        address.sin_port = htons(port);
        return connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }

    void send(const std::string& bytes) const { ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL); }

    // What has arrived within a second of the network's time; "closed" behind it if the connection is.
    std::string hear() const
    {
        pollfd watched = {m_descriptor, POLLIN, 0};
        if (poll(&watched, 1, 1000) == 0) {
            return "silence";
        }
        std::array<char, 4096> heard = {};
        const ssize_t count = recv(m_descriptor, heard.data(), heard.size(), 0);
        return count > 0 ? std::string(heard.data(), static_cast<std::size_t>(count)) : "closed";
    }

    int descriptor() const { return m_descriptor; }

private:
    const int m_descriptor;
};

class NetworkTest : public testing::Test
{
protected:
    testserver::ServerConfig config() const
    {
        testserver::ServerConfig config;
        config.tls = testserver::TlsMode::Explicit;
        config.certificate = testserver::makeSelfSigned();
        return config;
    }

    const testserver::TlsContexts tls = testserver::TlsContexts(config());
};

using NetworkDeathTest = NetworkTest;

TEST_F(NetworkTest, AWaitForNothingMovesTheClockAndTakesNoTime)
{
    Playback nobody("", tls);
    const Network network(nobody);
    const Clock::time_point before = Clock::now();
    EXPECT_EQ(0, poll(nullptr, 0, 600000));
    const auto waited = Clock::now() - before;
    EXPECT_LE(std::chrono::minutes(10), waited);
    EXPECT_GT(std::chrono::minutes(10) + std::chrono::milliseconds(1), waited);
}

TEST_F(NetworkTest, ConnectsToThePeersPortsOnly)
{
    Playback server("", tls);
    const Network network(server);
    EXPECT_EQ(0, Socket().connectTo(kControlPort));
    EXPECT_EQ(0, Socket().connectTo(kDataPort));
    EXPECT_EQ(-1, Socket().connectTo(1));
    EXPECT_EQ(ECONNREFUSED, errno);
    EXPECT_EQ(-1, Socket().connectTo(kControlPort, "10.0.0.1"));
    EXPECT_EQ(ECONNREFUSED, errno);
}

TEST_F(NetworkTest, ItsSocketsHaveAddresses)
{
    Playback server("", tls);
    const Network network(server);
    const Socket client;
    client.connectTo(kControlPort);
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    ASSERT_EQ(0, getpeername(client.descriptor(), reinterpret_cast<sockaddr*>(&address), &length));
    EXPECT_EQ(htonl(INADDR_LOOPBACK), address.sin_addr.s_addr);
    EXPECT_EQ(kControlPort, ntohs(address.sin_port));
    ASSERT_EQ(0, getsockname(client.descriptor(), reinterpret_cast<sockaddr*>(&address), &length));
    EXPECT_EQ(AF_INET, address.sin_family);
}

TEST_F(NetworkTest, WithoutOneTheSystemsNetworkIsThere)
{
    const LoopbackPort port;
    port.listen();
    const Socket client;
    EXPECT_EQ(0, client.connectTo(port.number()));
    EXPECT_TRUE(port.wasReached());
    pollfd watched = {client.descriptor(), POLLOUT, 0};
    EXPECT_EQ(1, poll(&watched, 1, -1));
}

TEST_F(NetworkDeathTest, AWaitThatNothingCanEndIsAFinding)
{
    EXPECT_DEATH(
        {
            Playback nobody("", tls);
            const Network network(nobody);
            poll(nullptr, 0, -1);
        },
        "This must hold, but does not: a wait ends");
}

TEST_F(NetworkDeathTest, ACallOfMoreThanThreeHoursIsAFinding)
{
    EXPECT_DEATH(
        {
            Playback nobody("", tls);
            const Network network(nobody);
            for (;;) {
                poll(nullptr, 0, 60000);
            }
        },
        "This must hold, but does not: a call ends");
}

TEST_F(NetworkTest, APlaybackRepliesToEachCommandAndToSilence)
{
    Playback server("220 hello\r\n~331 (@, #)\r\n~530 no\r\n", tls);
    const Network network(server);
    const Socket client;
    client.connectTo(kControlPort);
    EXPECT_EQ("220 hello\r\n", client.hear());
    client.send("USER me\r\n");
    EXPECT_EQ("331 (2020, 7,228)\r\n", client.hear());
    EXPECT_EQ("530 no\r\n", client.hear());
    EXPECT_EQ("closed", client.hear());
}

TEST_F(NetworkTest, AGoodReplyIsTheCommandsOwnAndWaitsForIt)
{
    Playback server("*~550 no\r\n~*^hello", tls);
    const Network network(server);
    const Socket client;
    client.connectTo(kControlPort);
    EXPECT_EQ("220 ready\r\n", client.hear());
    client.send("USER me\r\n");
    EXPECT_EQ("550 no\r\n", client.hear());
    EXPECT_EQ("silence", client.hear());
    client.send("PASS me\r\n");
    EXPECT_EQ("230 in\r\n", client.hear());
    client.send("SIZE a.bak\r\n");
    EXPECT_EQ("213 5\r\n", client.hear());
    client.send("RETR a.bak\r\n");
    EXPECT_EQ("150 here\r\n", client.hear());
    EXPECT_EQ("226 done\r\n", client.hear());
}

TEST_F(NetworkTest, EachDataConnectionHasItsContentAndTheLastOneIsRepeated)
{
    Playback server("*^one^two", tls);
    const Network network(server);
    for (const char* const content : {"one", "two", "two"}) {
        const Socket client;
        client.connectTo(kDataPort);
        EXPECT_EQ(content, client.hear());
        EXPECT_EQ("closed", client.hear());
    }
}

TEST_F(NetworkTest, AStoredFileHasTheSizeThatWasSent)
{
    Playback server("*^", tls);
    const Network network(server);
    const Socket control;
    control.connectTo(kControlPort);
    EXPECT_EQ("220 ready\r\n", control.hear());
    {
        const Socket data;
        data.connectTo(kDataPort);
        data.send("1234567");
    }
    control.send("SIZE a.bak\r\n");
    EXPECT_EQ("213 7\r\n", control.hear());
}

TEST_F(NetworkTest, ADeafServerClosesAfterTenMinutes)
{
    Playback server("%", tls);
    Network network(server);
    const Socket client;
    client.connectTo(kControlPort);
    client.send("USER me\r\n");
    EXPECT_EQ("silence", client.hear());
    network.pass(10LL * 60 * 1000 * kMillisecond);
    EXPECT_EQ("closed", client.hear());
}

} // namespace
