#include "contract/Contract.h"

#include "transfer/CurlSFtpClient.h"

#include <cstdint>
#include <vector>

namespace {

class ConnectionTestContract : public Contract
{
protected:
    Lines test(int expected, uint32_t timeout = 90)
    {
        return journalOf([&] { EXPECT_EQ(expected, CurlSFtpClient().TestSConnect(request, timeout)); });
    }

    void expectCode(int code, uint32_t timeout = 90)
    {
        performGives(code);
        EXPECT_TRUE(sameLines(performed(code), test(code, timeout)));
    }

    static std::string record(int level, const std::string& pieces)
    {
        return recordLine(level, "CurlSFtpClient::TestSConnect", pieces);
    }

    static Lines begin(const std::string& address)
    {
        return {record(1, "begin test sftp connection"), "credentials joined",
                record(1, "== remotePath is: |" + address)};
    }

    static Lines performed(int code)
    {
        return begin("ftp://server:2121/backup/") +
               Lines({"handle 1 made", "1 URL = ftp://server:2121/backup/", kPort,
                      "1 USERPWD = operator:correct horse battery", "1 CONNECTTIMEOUT = 20", "1 NOSIGNAL = 1"}) +
               tlsStep() +
               Lines({"1 perform", record(1, "errorCode is: |" + std::to_string(code)), "handle 1 cleaned up",
                      "credentials wiped"});
    }
};

TEST_F(ConnectionTestContract, ReturnsLibcurlsCodeUnchanged)
{
    // Also CURLE_REMOTE_ACCESS_DENIED: no response translates it.
    for (int code = 0; code < kEndOfCodes && !HasFailure(); ++code) {
        SCOPED_TRACE(nameOf(code));
        expectCode(code);
    }
}

TEST_F(ConnectionTestContract, LeavesOpensslsErrorQueueAlone)
{
    for (const CURLcode code : {CURLE_OK, CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_CACERT_BADFILE}) {
        SCOPED_TRACE(nameOf(code));
        const unsigned long hosts = recorded::leaveHostsError();
        performGives(code);
        test(code);
        EXPECT_EQ(std::vector<unsigned long>{hosts}, recorded::takeErrors());
    }
}

TEST_F(ConnectionTestContract, AnEmptyAddressPerformsNothing)
{
    request.remotePath = "";
    EXPECT_TRUE(
        sameLines(begin("") + Lines{"credentials wiped", record(4, "remotePath or userPwd is emputy.")}, test(-1)));
}

TEST_F(ConnectionTestContract, EmptyCredentialsAreTried)
{
    request.userName = "";
    request.password = "";
    EXPECT_TRUE(hasLine("1 USERPWD = :", test(CURLE_OK)));
}

TEST_F(ConnectionTestContract, WithoutAHandleItFails)
{
    scripted::curl().handles = false;
    EXPECT_TRUE(
        sameLines(begin("ftp://server:2121/backup/") +
                      Lines{"curl_easy_init gives nothing", "credentials wiped", record(1, "curl initialize failed.")},
                  test(-1)));
}

TEST_F(ConnectionTestContract, TheTimeoutHasNoEffect)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        SCOPED_TRACE(timeout);
        expectCode(CURLE_OK, timeout);
    }
}

TEST_F(ConnectionTestContract, LibcurlGetsACopyOfTheAddress)
{
    test(CURLE_OK);
    expectUrlCopied();
}

TEST_F(ConnectionTestContract, AnExceptionCleansUpAndWipes)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::bad_alloc(); };
    const Lines lines = journalOf([&] { EXPECT_THROW(CurlSFtpClient().TestSConnect(request, 90), std::bad_alloc); });
    EXPECT_TRUE(sameLines({"1 perform", "handle 1 cleaned up", "credentials wiped"}, lastOf(lines, 3)));
}

} // namespace
