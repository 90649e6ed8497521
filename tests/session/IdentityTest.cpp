// What must be the same for a connection to serve another request.
#include <request/Access.h>
#include <request/Certificates.h>

#include "support/LiveHost.h"

#include "server/Certificates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

class Identity : public testing::Test
{
protected:
    Identity()
    {
        request.remotePath = "ftp://host:2121/dir/a.bak";
        request.userName = "user";
        request.password = "password";
        request.caCert = authority.certificatePem();
    }

    std::string digestOf(const std::function<void(SFtpRequest&)>& change) const
    {
        SFtpRequest changed = request;
        change(changed);
        const SessionOptions options;
        session::CertificateReader certificates;
        return session::Access(changed, options, certificates).identity().digest;
    }

    SFtpRequest request;
    const testserver::CertificateAuthority authority;
};

} // namespace

// The same link-local address is another machine on each of the networks.
TEST_F(Identity, IsOfTheZoneToo)
{
    const auto zoneIs = [this](const char* zone) {
        return digestOf(
            [zone](SFtpRequest& each) { each.remotePath = std::string("ftp://[fe80::1%25") + zone + "]/"; });
    };
    EXPECT_EQ(zoneIs("eth0"), zoneIs("eth0"));
    EXPECT_NE(zoneIs("eth0"), zoneIs("eth1"));
}

TEST_F(Identity, IsOfServerLoginAndTrust)
{
    live::setCertAuthSwitch(0); // "none" counts
    const std::string usual = digestOf([](SFtpRequest&) {});
    struct Case
    {
        const char* what;
        std::function<void(SFtpRequest&)> change;
    };
    const Case cases[] = {
        {"scheme", [](SFtpRequest& each) { each.remotePath = "ftps://host:2121/dir/a.bak"; }},
        {"host", [](SFtpRequest& each) { each.remotePath = "ftp://other:2121/dir/a.bak"; }},
        {"port in the URL", [](SFtpRequest& each) { each.remotePath = "ftp://host:2122/dir/a.bak"; }},
        {"port", [](SFtpRequest& each) { each.port = 2122; }},
        {"user", [](SFtpRequest& each) { each.userName = "other"; }},
        {"password", [](SFtpRequest& each) { each.password = "other"; }},
        {"user and password with the border elsewhere",
         [](SFtpRequest& each) {
             each.userName = "userp";
             each.password = "assword";
         }},
        {"authority",
         [](SFtpRequest& each) { each.caCert += testserver::CertificateAuthority("Another").certificatePem(); }},
        {"the machine's authorities", [](SFtpRequest& each) { each.caCert.clear(); }},
        {"any authority", [](SFtpRequest& each) { each.caCert = "none"; }},
    };
    std::vector<std::string> digests = {usual};
    for (const Case& each : cases) {
        const std::string digest = digestOf(each.change);
        if (std::string(each.what) != "port") { // the one of the URL, told otherwise
            EXPECT_EQ(0, std::count(digests.begin(), digests.end(), digest)) << each.what;
        }
        digests.push_back(digest);
    }
    EXPECT_EQ(digests[3], digests[4]);
    for (const auto& same :
         {+[](SFtpRequest& each) { each.remotePath = "ftp://host:2121/other/"; },
          +[](SFtpRequest& each) { each.remoteFileName = "a"; }, +[](SFtpRequest& each) { each.localPath = "a"; }}) {
        EXPECT_EQ(usual, digestOf(same));
    }
    live::setCertAuthSwitch(1);
}
