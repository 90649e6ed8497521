#include "harness/Contract.h"

#include "transfer/CurlSFtpClient.h"

#include <algorithm>
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

    static std::string record(int level, const std::string& pieces)
    {
        return "log " + std::to_string(level) + " SFtpClient 77 CurlSFtpClient::TestSConnect(): 0|" + pieces + "|";
    }

    static Lines begin(const std::string& address)
    {
        return {record(1, "begin test sftp connection"), "credentials joined",
                record(1, "== remotePath is: |" + address)};
    }

    static Lines performed(int code)
    {
        return begin("ftp://server:2121/backup/") +
               Lines({"handle 1 made", "1 URL = ftp://server:2121/backup/", "1 PORT = 4000060021",
                      "1 USERPWD = operator:correct horse battery", "1 CONNECTTIMEOUT = 20", "1 NOSIGNAL = 1"}) +
               tlsStep(1) +
               Lines({"1 perform", record(1, "errorCode is: |" + std::to_string(code)), "handle 1 cleaned up",
                      "credentials wiped"});
    }
};

TEST_F(ConnectionTestContract, SuccessGivesZero) { EXPECT_EQ(performed(0), test(0)); }

TEST_F(ConnectionTestContract, FailureGivesLibcurlsCodeUnchanged)
{
    // 9 stays 9 here: no response translates it.
    for (int code = 1; code < 128; ++code) {
        scripted::curl().made = 0;
        performGives(static_cast<CURLcode>(code));
        EXPECT_EQ(performed(code), test(code));
    }
}

TEST_F(ConnectionTestContract, OpensslsErrorsAreLeftWhereTheyAre)
{
    for (const CURLcode code : {CURLE_OK, CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_CACERT_BADFILE}) {
        const unsigned long hosts = recorded::leaveHostsError();
        performGives(code);
        test(code);
        EXPECT_EQ(std::vector<unsigned long>{hosts}, recorded::takeErrors());
    }
}

TEST_F(ConnectionTestContract, AnEmptyAddressPerformsNothing)
{
    request.remotePath = "";
    EXPECT_EQ(begin("") + Lines({"credentials wiped", record(4, "remotePath or userPwd is emputy.")}), test(-1));
}

TEST_F(ConnectionTestContract, EmptyCredentialsAreTried)
{
    request.userName = "";
    request.password = "";
    const Lines lines = test(0);
    EXPECT_NE(lines.end(), std::find(lines.begin(), lines.end(), "1 USERPWD = :"));
}

TEST_F(ConnectionTestContract, WithoutAHandleItFails)
{
    scripted::curl().handles = false;
    EXPECT_EQ(begin("ftp://server:2121/backup/") +
                  Lines({"curl_easy_init gives nothing", "credentials wiped", record(1, "curl initialize failed.")}),
              test(-1));
}

TEST_F(ConnectionTestContract, TheTimeoutHasNoEffect)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        scripted::curl().made = 0;
        EXPECT_EQ(performed(0), test(0, timeout));
    }
}

TEST_F(ConnectionTestContract, LibcurlGetsACopyOfTheAddress)
{
    test(0);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}

TEST_F(ConnectionTestContract, AnExceptionCleansUpAndWipes)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::bad_alloc(); };
    Lines lines = journalOf([&] { EXPECT_THROW(CurlSFtpClient().TestSConnect(request, 90), std::bad_alloc); });
    EXPECT_EQ(Lines({"1 perform", "handle 1 cleaned up", "credentials wiped"}), Lines(lines.end() - 3, lines.end()));
}

} // namespace
