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

// A client's control connection to a playback, in a network of its own.
class Dialogue
{
public:
    Dialogue(const std::string& script, const testserver::TlsContexts& tls) : m_server(script, tls), m_network(m_server)
    {
        m_client.connectTo(kControlPort);
    }

    std::string hear() const { return m_client.hear(); }
    std::string replyTo(const std::string& command) const
    {
        m_client.send(command + "\r\n");
        return hear();
    }
    void waitTenMinutes() { m_network.pass(10LL * 60 * 1000 * kMillisecond); }

private:
    Playback m_server;
    Network m_network;
    const Socket m_client;
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
    const Dialogue dialogue("220 hello\r\n~331 (@, #)\r\n~530 no\r\n", tls);
    EXPECT_EQ("220 hello\r\n", dialogue.hear());
    EXPECT_EQ("331 (2020, 7,228)\r\n", dialogue.replyTo("USER me"));
    EXPECT_EQ("530 no\r\n", dialogue.hear());
    EXPECT_EQ("closed", dialogue.hear());
}

TEST_F(NetworkTest, AGoodReplyIsTheCommandsOwnAndWaitsForIt)
{
    const Dialogue dialogue("*~550 no\r\n~*^hello", tls);
    EXPECT_EQ("220 ready\r\n", dialogue.hear());
    EXPECT_EQ("550 no\r\n", dialogue.replyTo("USER me"));
    EXPECT_EQ("silence", dialogue.hear());
    EXPECT_EQ("230 in\r\n", dialogue.replyTo("PASS me"));
    EXPECT_EQ("213 5\r\n", dialogue.replyTo("SIZE a.bak"));
    EXPECT_EQ("150 here\r\n", dialogue.replyTo("RETR a.bak"));
    EXPECT_EQ("226 done\r\n", dialogue.hear());
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
    const Dialogue dialogue("*^", tls);
    EXPECT_EQ("220 ready\r\n", dialogue.hear());
    {
        const Socket data;
        data.connectTo(kDataPort);
        data.send("1234567");
    }
    EXPECT_EQ("213 7\r\n", dialogue.replyTo("SIZE a.bak"));
}

TEST_F(NetworkTest, ADeafServerClosesAfterTenMinutes)
{
    Dialogue dialogue("%", tls);
    EXPECT_EQ("silence", dialogue.replyTo("USER me"));
    dialogue.waitTenMinutes();
    EXPECT_EQ("closed", dialogue.hear());
}

} // namespace
