// What a session keeps of its connections, and for whom.
#include "SessionLoop.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

class SessionKeeps : public SessionLoop
{
};

} // namespace

TEST_F(SessionKeeps, MakesAConnectionAnewThatDiedWhileItWasKept)
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

TEST_F(SessionKeeps, TriesNothingTwiceThatTheServerHasAnswered)
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

TEST_F(SessionKeeps, KeepsNoConnectionWhoseRepliesMayBeOutOfStep)
{
    constexpr auto kTooLarge = static_cast<CURLcode>(100); // newer releases of libcurl leave a long reply's rest unread
    for (const CURLcode code : {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_FTP_WEIRD_227_FORMAT, CURLE_FTP_CANT_GET_HOST,
                                CURLE_FTP_WEIRD_SERVER_REPLY, CURLE_RECV_ERROR, CURLE_SEND_ERROR, CURLE_GOT_NOTHING,
                                CURLE_OPERATION_TIMEDOUT, kTooLarge, CURLE_REMOTE_FILE_NOT_FOUND}) {
        unsigned transfers = 0;
        scripted::curl().perform = [&](scripted::Handle&) { return ++transfers == 1 ? code : CURLE_OK; };
        const Lines lines = journalOfSession([&](SFtpSession& session) {
            EXPECT_EQ(nameOf(code), nameOf(test(session)));
            EXPECT_EQ(CURLE_OK, test(session));
        });
        EXPECT_EQ(code == CURLE_REMOTE_FILE_NOT_FOUND ? 0 : 1, countOf(lines, "handle 2 made")) << nameOf(code);
    }
}

TEST_F(SessionKeeps, TriesNothingTwiceOnANewConnection)
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

TEST_F(SessionKeeps, KeepsNoConnectionWhereTheHostSaysSo)
{
    options.idleTimeout = milliseconds(0);
    const Lines lines = journalOfSession([&](SFtpSession& session) {
        EXPECT_EQ(CURLE_OK, test(session));
        EXPECT_EQ(CURLE_OK, test(session));
    });
    EXPECT_TRUE(hasLine("handle 2 made", lines));
}

TEST_F(SessionKeeps, KeepsConnectionsApartByAllThatCounts)
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

TEST_F(SessionKeeps, MakesRoomForAnotherLoginsConnection)
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

TEST_F(SessionKeeps, WaitsForAConnectionNoLongerThanTheCallMayTake)
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

TEST_F(SessionKeeps, ClosesAConnectionThatWasIdleForTooLong)
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
