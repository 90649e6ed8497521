// How a session drives libcurl: waiting, being cancelled, running out of time, keeping a connection or not.
#include "OperationCalls.h"
#include "RecordedDisk.h"
#include "SessionContract.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace {

using std::chrono::milliseconds;

class SessionLoop : public SessionContract
{
protected:
    SessionLoop() { request.remotePath = "ftp://server/backup/"; }

    int test(SFtpSession& session) { return session.TestSConnect(request, errorText); }

    static std::ptrdiff_t countOf(const Lines& lines, const std::string& piece)
    {
        return std::count_if(lines.begin(), lines.end(),
                             [&piece](const std::string& line) { return line.find(piece) != std::string::npos; });
    }

    static Lines waitsIn(const Lines& lines)
    {
        Lines waits;
        std::copy_if(lines.begin(), lines.end(), std::back_inserter(waits),
                     [](const std::string& line) { return line.find(" waits ") != std::string::npos; });
        return waits;
    }

    static std::string wait(int time) { return "multi 1 waits " + std::to_string(time) + " ms with 1 more"; }

    // A socket as libcurl asks for one.
    static curl_socket_t open(const scripted::Handle& handle, int family = AF_INET)
    {
        const auto call = reinterpret_cast<curl_socket_t (*)(void*, curlsocktype, curl_sockaddr*)>(
            handle.pointer(CURLOPT_OPENSOCKETFUNCTION));
        curl_sockaddr address = {};
        address.family = family;
        address.socktype = SOCK_STREAM;
        return call(handle.pointer(CURLOPT_OPENSOCKETDATA), CURLSOCKTYPE_IPCXN, &address);
    }

    static int close(const scripted::Handle& handle, curl_socket_t socket)
    {
        const auto call = reinterpret_cast<int (*)(void*, curl_socket_t)>(handle.pointer(CURLOPT_CLOSESOCKETFUNCTION));
        return call(handle.pointer(CURLOPT_CLOSESOCKETDATA), socket);
    }
};

} // namespace

TEST_F(SessionLoop, WaitsLongerWhereNothingHappensForLong)
{
    scripted::curl().waits = 2;
    scripted::curl().onWait = [] { std::this_thread::sleep_for(milliseconds(80)); };
    const Lines lines = journalOfCall(operationCall("TestSConnect").run);
    const Lines waits = waitsIn(lines);
    ASSERT_EQ(2U, waits.size());
    EXPECT_EQ(3, countOf(lines, "multi 1 perform"));
    EXPECT_EQ(1, countOf(lines, "multi 1 takes 1"));
    // An eighth of the time so far, from 1 ms to 100.
    EXPECT_EQ(wait(1), waits[0]);
    const int second = std::stoi(waits[1].substr(waits[1].find("waits ") + 6));
    EXPECT_LE(10, second);
    EXPECT_GE(100, second);
}

TEST_F(SessionLoop, EndsAtOnceWhenItIsCancelled)
{
    scripted::curl().waits = 5;
    const std::string text = scripted::text(42) + ": Cancel() was called";
    int rounds = 0;
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        scripted::curl().onWait = [&] {
            if (++rounds == 2) {
                session.Cancel();
            }
        };
        EXPECT_EQ(nameOf(CURLE_ABORTED_BY_CALLBACK), nameOf(test(session)));
        EXPECT_EQ(text, errorText);
        // What comes later ends, too, and with no word to libcurl.
        EXPECT_EQ(nameOf(CURLE_ABORTED_BY_CALLBACK), nameOf(test(session)));
        EXPECT_EQ(text, errorText);
        session.ClearCancel();
        EXPECT_EQ(nameOf(CURLE_OK), nameOf(test(session)));
    });
    EXPECT_EQ(2 + 5, countOf(lines, " waits "));
    const auto second = std::find(lines.begin(), lines.end(), "handle 2 made");
    ASSERT_NE(lines.end(), second) << "a connection that was cut was used again";
    EXPECT_TRUE(sameLines({"multi 1 waits 1 ms with 1 more", "multi 1 perform", "multi 1 gives 1 back", "list freed",
                           "multi 1 cleaned up", "handle 1 cleaned up", failureOf("TestSConnect", request, 42, text),
                           failureOf("TestSConnect", request, 42, text), "handle 2 made"},
                          Lines(second - 8, second + 1)));
}

TEST_F(SessionLoop, EndsWhenTheCallTakesTooLong)
{
    scripted::curl().waits = 1000000;
    options.callTimeout = milliseconds(20);
    journalOfCall(operationCall("TestSConnect").run, CURLE_OPERATION_TIMEDOUT);
    EXPECT_EQ(scripted::text(28) + ": the call took longer than callTimeout, 20 ms", errorText);
}

TEST_F(SessionLoop, EndsWhenAReplyOrAByteIsAwaitedForTooLong)
{
    options.stallTimeout = milliseconds(20);
    options.replyTimeout = milliseconds(30);
    request.remotePath += "a";
    // How a transfer goes until the server says no more.
    const auto textAfter = [&](const std::function<void(const scripted::Handle&)>& beginning,
                               milliseconds atMost = std::chrono::seconds(10)) {
        scripted::curl().perform = [&, atMost](scripted::Handle& handle) {
            const memory::Pause pause;
            const auto begin = std::chrono::steady_clock::now();
            beginning(handle);
            while (handle.progress(0, 0) == 0) {
                if (std::chrono::steady_clock::now() - begin > atMost) {
                    return CURLE_OK;
                }
            }
            return CURLE_ABORTED_BY_CALLBACK;
        };
        SFtpSession session(options);
        errorText = "none";
        operationCall("DownLoadTo").run(session, request, errorText);
        return errorText;
    };
    const std::string reply = scripted::text(28) + ": no reply for replyTimeout, 30 ms";
    const std::string byte = scripted::text(28) + ": no byte moved for stallTimeout, 20 ms";
    // Until the server is reached, libcurl's own limit counts.
    EXPECT_EQ("none", textAfter([](const scripted::Handle&) {}, milliseconds(100)));
    EXPECT_EQ(reply, textAfter([](const scripted::Handle& handle) { EXPECT_EQ(0, handle.loggedIn()); }));
    EXPECT_EQ(byte + " (the server's last reply: 150 data follows)", textAfter([](const scripted::Handle& handle) {
                  handle.loggedIn();
                  handle.hear("150 data follows\r\n");
              }));
    EXPECT_EQ(reply + " (the server's last reply: 226 done)", textAfter([](const scripted::Handle& handle) {
                  handle.loggedIn();
                  handle.hear("150 data follows\r\n");
                  handle.hear("226 done\r\n");
              }));
    // All bytes have come: what is awaited then is the reply.
    EXPECT_EQ(reply, textAfter([](const scripted::Handle& handle) {
                  handle.loggedIn();
                  EXPECT_EQ(0, handle.progress(7, 3));
                  EXPECT_EQ(0, handle.progress(7, 7));
              }));
}

TEST_F(SessionLoop, MakesAConnectionAnewThatDiedWhileItWasKept)
{
    for (const CURLcode code : {CURLE_RECV_ERROR, CURLE_SEND_ERROR, CURLE_GOT_NOTHING, CURLE_OPERATION_TIMEDOUT,
                                CURLE_FTP_WEIRD_SERVER_REPLY}) {
        for (const bool says421 : {false, true}) {
            int transfers = 0;
            scripted::curl().perform = [&](scripted::Handle& handle) {
                if (++transfers != 2) {
                    return CURLE_OK;
                }
                if (says421) {
                    handle.hear("421 too long\r\n");
                }
                return code;
            };
            const Lines lines = journalOfSession([&](SFtpSession& session) {
                EXPECT_EQ(nameOf(CURLE_OK), nameOf(test(session)));
                EXPECT_EQ(nameOf(CURLE_OK), nameOf(test(session))) << nameOf(code);
            });
            EXPECT_EQ(3, transfers);
            EXPECT_TRUE(hasLine("handle 2 made", lines));
            EXPECT_EQ("as it was", errorText);
            // The dead one is closed before the new one is made.
            EXPECT_LT(std::find(lines.begin(), lines.end(), "handle 1 cleaned up"),
                      std::find(lines.begin(), lines.end(), "handle 2 made"));
        }
    }
}

TEST_F(SessionLoop, TriesNothingTwiceThatTheServerHasAnswered)
{
    struct Case
    {
        CURLcode code;
        const char* heard;
        bool moves;
    };
    for (const Case& each : {Case{CURLE_RECV_ERROR, "350 go on\r\n", false}, Case{CURLE_RECV_ERROR, "", true},
                             Case{CURLE_QUOTE_ERROR, "", false}, Case{CURLE_RECV_ERROR, "421 a\r\n421 b\r\n", false}}) {
        int transfers = 0;
        scripted::curl().perform = [&](scripted::Handle& handle) {
            if (++transfers == 1) {
                return CURLE_OK;
            }
            for (std::string text = each.heard; !text.empty(); text.erase(0, text.find('\n') + 1)) {
                handle.hear(text.substr(0, text.find('\n') + 1));
            }
            if (each.moves) {
                handle.receive("x");
            }
            return each.code;
        };
        request.remotePath = "ftp://server/backup/a";
        const Lines lines = journalOfSession([&](SFtpSession& session) {
            EXPECT_EQ(CURLE_OK, operationCall("DownLoadTo").run(session, request, errorText));
            EXPECT_EQ(each.code, operationCall("DownLoadTo").run(session, request, errorText));
        });
        EXPECT_EQ(2, transfers) << each.heard;
        EXPECT_EQ(0, countOf(lines, "handle 2 made"));
    }
}

TEST_F(SessionLoop, TriesNothingTwiceOnANewConnection)
{
    performGives(CURLE_RECV_ERROR);
    EXPECT_EQ(1, countOf(journalOfCall(operationCall("TestSConnect").run, CURLE_RECV_ERROR), "multi 1 perform"));
    // Nor a third time.
    int transfers = 0;
    scripted::curl().perform = [&](scripted::Handle&) { return ++transfers == 1 ? CURLE_OK : CURLE_RECV_ERROR; };
    journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(CURLE_OK, test(session));
        EXPECT_EQ(CURLE_RECV_ERROR, test(session));
    });
    EXPECT_EQ(3, transfers);
}

TEST_F(SessionLoop, GoesOnWithTls13WhereAServerHasNothingElse)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        if (handle.number() == 1) {
            handle.detail("error:0A00042E:SSL routines::tlsv1 alert protocol version");
            const memory::Pause pause;
            scripted::curl().perform = [](scripted::Handle&) { return CURLE_OK; };
        }
        return CURLE_SSL_CONNECT_ERROR;
    };
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(nameOf(CURLE_OK), nameOf(test(session)));
        EXPECT_EQ(nameOf(CURLE_OK), nameOf(test(session)));
    });
    EXPECT_EQ(1, countOf(lines, "1 SSLVERSION = 393222"));
    EXPECT_EQ(2, countOf(lines, "1 SSLVERSION = 7"));
    EXPECT_EQ("as it was", errorText);
}

TEST_F(SessionLoop, GoesOnWithNothingElseThatEndsAHandshake)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        handle.detail("certificate has expired");
        return CURLE_SSL_CONNECT_ERROR;
    };
    EXPECT_EQ(1, countOf(journalOfCall(operationCall("TestSConnect").run, CURLE_SSL_CONNECT_ERROR), " perform"));
    // Nor where 1.3 has been tried.
    options.minimumTls = TlsVersion::Tls13;
    scripted::curl().perform = [](scripted::Handle& handle) {
        handle.detail("protocol version");
        return CURLE_SSL_CONNECT_ERROR;
    };
    EXPECT_EQ(2, countOf(journalOfCall(operationCall("TestSConnect").run, CURLE_SSL_CONNECT_ERROR), " perform"));
}

TEST_F(SessionLoop, KeepsNoConnectionWhereTheHostSaysSo)
{
    options.idleTimeout = milliseconds(0);
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(CURLE_OK, test(session));
        EXPECT_EQ(CURLE_OK, test(session));
    });
    EXPECT_TRUE(hasLine("handle 2 made", lines));
}

TEST_F(SessionLoop, KeepsConnectionsApartByAllThatCounts)
{
    const std::vector<std::function<void()>> changes = {
        [&] { request.userName = "other"; },
        [&] { request.password = "other"; },
        [&] { request.remotePath = "ftps://server/backup/"; },
        [&] { request.remotePath = "ftp://server2/backup/"; },
        [&] { request.port = 2121; },
        [&] { request.caCert = "none"; },
    };
    const SFtpRequest usual = request;
    recording::host().certAuthSwitch = 0;
    for (const std::function<void()>& change : changes) {
        const Lines lines = journalOfSession([&](SFtpSession& session) {
            const memory::Pause pause;
            request = usual;
            EXPECT_EQ(CURLE_OK, test(session));
            change();
            EXPECT_EQ(CURLE_OK, test(session));
            request = usual;
            request.remotePath += "below";
            EXPECT_EQ(CURLE_OK, test(session));
        });
        EXPECT_TRUE(hasLine("handle 2 made", lines));
        EXPECT_FALSE(hasLine("handle 3 made", lines)) << "the first one serves another directory";
        EXPECT_EQ(2, countOf(lines, "1 reset"));
    }
}

TEST_F(SessionLoop, MakesRoomForAnotherLoginsConnection)
{
    options.maxConnections = 2;
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        const memory::Pause pause;
        for (const char* const user : {"one", "two", "one", "three"}) {
            request.userName = user;
            EXPECT_EQ(CURLE_OK, test(session));
        }
    });
    // "two" was used least recently.
    const auto gone = std::find(lines.begin(), lines.end(), "handle 2 cleaned up");
    const auto made = std::find(lines.begin(), lines.end(), "handle 3 made");
    ASSERT_NE(lines.end(), made);
    EXPECT_LT(gone, made);
    EXPECT_LT(made, std::find(lines.begin(), lines.end(), "handle 1 cleaned up"));
}

TEST_F(SessionLoop, WaitsForAConnectionNoLongerThanTheCallMayTake)
{
    options.maxConnections = 1;
    options.callTimeout = milliseconds(50);
    SFtpSession session(options);
    int inner = -1;
    std::string innerText;
    scripted::curl().perform = [&](scripted::Handle&) {
        std::thread other([&] { inner = session.TestSConnect(request, innerText); });
        other.join();
        return CURLE_OK;
    };
    EXPECT_EQ(nameOf(CURLE_OK), nameOf(test(session))) << errorText;
    EXPECT_EQ(nameOf(CURLE_OPERATION_TIMEDOUT), nameOf(inner));
    EXPECT_EQ(scripted::text(28) + ": the call took longer than callTimeout, 50 ms while all connections to the server "
                                   "were in use",
              innerText);
}

TEST_F(SessionLoop, OpensSocketsThatNoChildProcessGets)
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

TEST_F(SessionLoop, PassesOnWhatTheProgressThrows)
{
    options.progress = [](const TransferProgress&) { throw std::runtime_error("the host's own"); };
    request.remotePath += "a";
    scripted::curl().perform = [](scripted::Handle& handle) {
        const memory::Pause pause;
        EXPECT_EQ(1, handle.progress(4, 0));
        return CURLE_ABORTED_BY_CALLBACK;
    };
    SFtpSession session(options);
    try {
        operationCall("DownLoadTo").run(session, request, errorText);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("the host's own", error.what());
    }
    EXPECT_EQ("as it was", errorText);
    EXPECT_TRUE(sameLines({exceptionOf("DownLoadTo", request).substr(4)}, recording::takeRecords()));
}

TEST_F(SessionLoop, GoesOnWithTheNextAddressWhereASocketCannotBeMade)
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
TEST_F(SessionLoop, CutsNothingThatHasTheNumberOfASocketThatLibcurlClosed)
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

TEST_F(SessionLoop, OpensNoSocketThatCouldNotBeCut)
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
        return CURLE_COULDNT_CONNECT;
    };
    journalOfCall(operationCall("TestSConnect").run, CURLE_COULDNT_CONNECT);
}

TEST_F(SessionLoop, ClosesAConnectionThatWasIdleForTooLong)
{
    options.idleTimeout = milliseconds(1);
    options.maxConnections = 1; // it no longer counts, or there would be none for the second call
    options.callTimeout = std::chrono::seconds(10);
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(CURLE_OK, test(session));
        std::this_thread::sleep_for(milliseconds(5));
        EXPECT_EQ(CURLE_OK, test(session));
    });
    EXPECT_LT(std::find(lines.begin(), lines.end(), "handle 1 cleaned up"),
              std::find(lines.begin(), lines.end(), "handle 2 made"));
}

// With a connection of its own for each call.
TEST_F(SessionLoop, HoldsNoMoreMemoryFromCallToCall)
{
    options.idleTimeout = milliseconds(0);
    const memory::Watch watch;
    SFtpSession session(options);
    const auto heldAfterACall = [&] {
        EXPECT_EQ(CURLE_OK, test(session));
        return memory::livingBlocks();
    };
    const unsigned first = heldAfterACall();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(first, heldAfterACall());
    }
}

TEST_F(SessionLoop, DoesNotBeginWithoutADescriptor)
{
    recorded::disk().failing = {{"eventfd", EMFILE}};
    EXPECT_THROW(SFtpSession(), std::system_error);
}
