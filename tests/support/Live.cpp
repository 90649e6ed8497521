#include "support/Live.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace {

constexpr const char* kDefaultTrust = "SFTPCLIENT_DEFAULT_TRUST";

Lines passwordLogin() { return {"> USER backup", "< 331 password please", "> PASS ****", "< 230 logged in"}; }

Lines protection() { return {"> PBSZ 0", "< 200 PBSZ=0", "> PROT P", "< 200 protection set"}; }

Lines startDirectory() { return {"> PWD", "< 257 \"/\""}; }

} // namespace

Live::Live() : out(std::make_unique<Redirection>(stdout)), err(std::make_unique<Redirection>(stderr))
{
    request.userName = config.user;
    request.password = config.password;
    request.caCert = authority.certificatePem();
    request.localPath = local("file");
    live::setCertAuthSwitch(1);
    live::takeRecords();
    // In place of the machine's own store: a test must not depend on it, nor on the time that it takes to read.
    trustByDefault(testserver::CertificateAuthority("Nobody's CA").certificatePem());
}

Live::~Live()
{
    if (HasFailure()) {
        // The test's failures were redirected too.
        const std::string printed = out->content();
        out.reset();
        std::cout << printed << std::flush;
    }
    unsetenv(kDefaultTrust);
}

void Live::serve()
{
    ServerFixture::serve();
    request.port = server->port();
}

SFtpRequest Live::requestFor(const std::string& path, const std::string& localName) const
{
    SFtpRequest aimed = request;
    aimed.remotePath = url(path);
    aimed.localPath = local(localName);
    return aimed;
}

void Live::trustByDefault(const std::string& caPem)
{
    writeFile(local("default-trust.pem"), caPem);
    setenv(kDefaultTrust, local("default-trust.pem").c_str(), 1);
}

void Live::makeSparse(const std::string& path, off_t size)
{
    writeFile(path, "");
    ASSERT_EQ(0, truncate(path.c_str(), size));
}

int Live::testConnection() { return ISFtpClient::CreateClient()->TestSConnect(request, 90); }

Lines Live::tlsLogin()
{
    return greeting() + Lines{"> AUTH SSL", "< 234 TLS next", "= TLS on control"} + passwordLogin() + protection() +
           startDirectory();
}

Lines Live::clearLogin() { return greeting() + passwordLogin() + startDirectory(); }

Lines Live::implicitLogin()
{
    return Lines{"= TLS on control"} + greeting() + passwordLogin() + protection() + startDirectory();
}

Lines Live::names(const std::string& verb, std::size_t bytes)
{
    return {"> EPSV",        "< 229 Entering Extended Passive Mode (|||PORT|)",
            "> TYPE A",      "< 200 type set",
            "> " + verb,     "< 150 data follows",
            "= TLS on data", "= " + std::to_string(bytes) + " bytes sent",
            "< 226 done"};
}

Lines Live::size(const std::string& name, const std::string& reply)
{
    return {"> MDTM " + name, "< 213 20260101000000", "> TYPE I", "< 200 type set",
            "> SIZE " + name, "< " + reply,           "> REST 0", "< 350 restart marked"};
}
