// The sockets of a session: how they are opened, cut and closed.
#include "RecordedDisk.h"
#include "SessionLoop.h"
#include "support/NextFunction.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <system_error>

namespace {

/// Called before the next questions about what a TCP connection has received, so many times.
std::function<void()> beforeAnswer;
int answers = 0;

class SessionSockets : public SessionLoop
{
};

// A socket as libcurl asks for one.
curl_socket_t open(const scripted::Handle& handle, int family = AF_INET)
{
    const auto call = reinterpret_cast<curl_socket_t (*)(void*, curlsocktype, curl_sockaddr*)>(
        handle.pointer(CURLOPT_OPENSOCKETFUNCTION));
    curl_sockaddr address = {};
    address.family = family;
    address.socktype = SOCK_STREAM;
    return call(handle.pointer(CURLOPT_OPENSOCKETDATA), CURLSOCKTYPE_IPCXN, &address);
}

int close(const scripted::Handle& handle, curl_socket_t socket)
{
    const auto call = reinterpret_cast<int (*)(void*, curl_socket_t)>(handle.pointer(CURLOPT_CLOSESOCKETFUNCTION));
    return call(handle.pointer(CURLOPT_CLOSESOCKETDATA), socket);
}

/// What a socket of libcurl's is connected to.
class Peer
{
public:
    Peer()
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_size = sizeof m_address;
        EXPECT_EQ(0, bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        EXPECT_EQ(0, listen(m_listener, 1));
        EXPECT_EQ(0, getsockname(m_listener, reinterpret_cast<sockaddr*>(&m_address), &m_size));
    }
    ~Peer()
    {
        ::close(m_listener);
        ::close(m_socket);
        ::close(m_libcurls);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Has libcurl's socket opened, and connects it, unless that is done: false then.
    bool meet(const scripted::Handle& handle)
    {
        if (m_libcurls != CURL_SOCKET_BAD) {
            return false;
        }
        m_libcurls = open(handle);
        EXPECT_EQ(0, connect(m_libcurls, reinterpret_cast<const sockaddr*>(&m_address), m_size));
        m_socket = accept(m_listener, nullptr, nullptr);
        return true;
    }
    void say(const std::string& text) const
    {
        EXPECT_EQ(static_cast<ssize_t>(text.size()), send(m_socket, text.data(), text.size(), MSG_NOSIGNAL));
    }
    /// And libcurl reads it.
    void tell(std::string text) const
    {
        say(text);
        EXPECT_EQ(static_cast<ssize_t>(text.size()), recv(m_libcurls, text.data(), text.size(), MSG_WAITALL));
    }

private:
    int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_socket = -1;
    curl_socket_t m_libcurls = CURL_SOCKET_BAD;
    sockaddr_in m_address = {};
    socklen_t m_size = 0;
};

} // namespace

extern "C" __attribute__((visibility("default"))) int getsockopt(int descriptor, int level, int option, void* value,
                                                                 socklen_t* size) noexcept
{
    static auto* const next = nextFunction<int(int, int, int, void*, socklen_t*)>("getsockopt");
    if (level == IPPROTO_TCP && option == TCP_INFO && answers > 0) {
        --answers;
        const memory::Pause pause;
        beforeAnswer();
    }
    return next(descriptor, level, option, value, size);
}

TEST_F(SessionSockets, OpensSocketsThatNoChildProcessGets)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        const memory::Pause pause;
        const curl_socket_t socket = open(handle);
        EXPECT_EQ(FD_CLOEXEC, fcntl(socket, F_GETFD));
        EXPECT_EQ(0, close(handle, socket));
        EXPECT_EQ(-1, fcntl(socket, F_GETFD));
        return CURLE_OK;
    };
    journalOfCall(operationCall("TestSConnect").run);
}

TEST_F(SessionSockets, GoesOnWithTheNextAddressWhereASocketCannotBeMade)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        const memory::Pause pause;
        constexpr int kNoFamily = 9999;
        EXPECT_EQ(CURL_SOCKET_BAD, open(handle, kNoFamily));
        return CURLE_OK;
    };
    journalOfCall(operationCall("TestSConnect").run);
}

// libcurl 7.88 closes a socket that did not connect without a word.
TEST_F(SessionSockets, CutsNothingThatHasTheNumberOfASocketThatLibcurlClosed)
{
    std::array<int, 2> others = {};
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, others.data()));
    SFtpSession session(options);
    scripted::curl().perform = [&](scripted::Handle& handle) {
        const memory::Pause pause;
        const curl_socket_t socket = open(handle);
        EXPECT_EQ(socket, dup2(others[0], socket));
        ::close(others[0]);
        others[0] = socket;
        session.Cancel();
        EXPECT_EQ(1, handle.progress(0, 0));
        return CURLE_COULDNT_CONNECT;
    };
    EXPECT_EQ(nameOf(CURLE_ABORTED_BY_CALLBACK), nameOf(test(session)));
    EXPECT_EQ(1, send(others[1], "a", 1, MSG_NOSIGNAL));
    char heard = 0;
    EXPECT_EQ(1, recv(others[0], &heard, 1, MSG_DONTWAIT));
    for (const int each : others) {
        EXPECT_EQ(0, ::close(each));
    }
}

TEST_F(SessionSockets, OpensNoSocketThatCouldNotBeCut)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        const memory::Pause pause;
        const int next = dup(STDIN_FILENO);
        ::close(next);
        rlimit before = {};
        EXPECT_EQ(0, getrlimit(RLIMIT_NOFILE, &before));
        const rlimit oneMore = {static_cast<rlim_t>(next) + 1, before.rlim_max};
        EXPECT_EQ(0, setrlimit(RLIMIT_NOFILE, &oneMore));
        EXPECT_EQ(CURL_SOCKET_BAD, open(handle));
        EXPECT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
        EXPECT_EQ(-1, fcntl(next, F_GETFD)) << "it was left open";
        handle.detail("Failed to connect");
        return CURLE_COULDNT_CONNECT;
    };
    journalOfCall(operationCall("TestSConnect").run, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(scripted::text(7) + ": no socket can be made: Too many open files", errorText);
}

// It would be taken for the reply to the next command. Over SSH a server may send what it likes.
TEST_F(SessionSockets, UsesNoConnectionAgainOverWhichSomethingCameUnasked)
{
    scripted::curl().connects = false;
    for (const char* const scheme : {"ftp", "ftps", "sftp"}) {
        SCOPED_TRACE(scheme);
        request.remotePath = std::string(scheme) + "://server/backup/";
        Peer peer;
        scripted::curl().perform = [&](scripted::Handle& handle) {
            const memory::Pause pause;
            peer.meet(handle);
            return CURLE_OK;
        };
        const Lines lines = journalOfSession([&](SFtpSession& session) {
            EXPECT_EQ(CURLE_OK, test(session));
            EXPECT_EQ(CURLE_OK, test(session));
            peer.say("200 unasked\r\n");
            EXPECT_EQ(CURLE_OK, test(session));
        });
        EXPECT_EQ(std::string("sftp") == scheme ? 0 : 1, countOf(lines, "handle 2 made"));
    }
}

// Also not if the reply to the command arrives while the session asks the kernel how much libcurl has read.
TEST_F(SessionSockets, NoticesAnOlderReplyWhileTheNextArrives)
{
    scripted::curl().connects = false;
    Peer peer;
    scripted::curl().perform = [&](scripted::Handle& handle) {
        const memory::Pause pause;
        if (peer.meet(handle)) {
            peer.tell("200 fine\r\n250 one too many\r\n");
        } else if (handle.number() == 1) {
            EXPECT_EQ(0, handle.loggedIn());
            beforeAnswer = [&peer] { peer.say("550 no\r\n"); };
            answers = 2;
            EXPECT_EQ(0U, handle.hear("250 one too many\r\n"));
            EXPECT_EQ(0, answers);
            return CURLE_WRITE_ERROR;
        }
        return CURLE_OK;
    };
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(CURLE_OK, test(session));
        EXPECT_EQ(CURLE_OK, test(session));
    });
    EXPECT_EQ(1, countOf(lines, "handle 2 made"));
}

TEST_F(SessionSockets, DoesNotBeginWithoutADescriptor)
{
    recorded::disk().failing = {{"eventfd", EMFILE}};
    EXPECT_THROW(SFtpSession(), std::system_error);
}
