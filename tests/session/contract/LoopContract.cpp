// How a session drives libcurl: waiting, being cancelled, running out of time.
#include "SessionLoop.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <regex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

// How long each wait may take, in milliseconds.
std::vector<long long> waitsIn(const Lines& lines)
{
    static const std::regex line("multi [12] waits ([0-9]+) ms with 1 more");
    std::vector<long long> waits;
    for (const std::string& each : lines) {
        std::smatch parts;
        if (std::regex_match(each, parts, line)) {
            waits.push_back(std::stoll(parts[1]));
        }
    }
    return waits;
}

} // namespace

TEST_F(SessionLoop, WaitsLongerWhereNothingHappensForLong)
{
    scripted::curl().waits = 2;
    const auto begin = std::chrono::steady_clock::now();
    std::vector<long long> elapsed;
    scripted::curl().onWait = [&] {
        const auto time = std::chrono::steady_clock::now() - begin;
        elapsed.push_back(std::chrono::duration_cast<milliseconds>(time).count());
        std::this_thread::sleep_for(milliseconds(80));
    };
    const Lines lines = journalOfCall(operationCall("TestSConnect").run);
    const std::vector<long long> waits = waitsIn(lines);
    ASSERT_EQ(2U, waits.size());
    EXPECT_EQ(3, countOf(lines, "multi 1 perform"));
    EXPECT_EQ(1, countOf(lines, "multi 1 takes 1"));
    // An eighth of the time so far, from 1 ms to 100.
    ASSERT_EQ(2U, elapsed.size());
    EXPECT_LE(1, waits[0]);
    EXPECT_GE(std::max(1LL, elapsed[0] / 8), waits[0]);
    EXPECT_LE(10, waits[1]);
    EXPECT_GE(std::min(100LL, elapsed[1] / 8), waits[1]);
}

// libcurl 7.88 does not always name it.
TEST_F(SessionLoop, WaitsForTheControlConnection)
{
    scripted::curl().connects = true;
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(CURLE_OK, test(session));
        scripted::curl().waits = 1;
        EXPECT_EQ(CURLE_OK, test(session));
    });
    EXPECT_EQ(1, countOf(lines, " ms with 2 more"));
    EXPECT_EQ(0, countOf(lines, "handle 2 made"));
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
    EXPECT_EQ(2U + 5U, waitsIn(lines).size());
    const auto second = std::find(lines.begin(), lines.end(), "handle 2 made");
    ASSERT_NE(lines.end(), second) << "a connection that was cut was used again";
    EXPECT_EQ(1U, waitsIn({*(second - 8)}).size());
    EXPECT_TRUE(sameLines({"multi 1 perform", "multi 1 gives 1 back", "list freed", "multi 1 cleaned up",
                           "handle 1 cleaned up", failureOf("TestSConnect", request, 42, text),
                           failureOf("TestSConnect", request, 42, text), "handle 2 made"},
                          Lines(second - 7, second + 1)));
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
