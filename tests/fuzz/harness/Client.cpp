#include "harness/Client.h"

#include "harness/Playback.h"
#include "harness/Require.h"

#include "support/LiveHost.h"

#include <Certificates.h>
#include <TlsContexts.h>

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

int lowestFreeDescriptor()
{
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(descriptor);
    return descriptor;
}

// The path of an unnamed file, so that nothing is left if the fuzzer is killed.
std::string fileWith(const std::string& content)
{
    const int file = memfd_create("fuzz", MFD_CLOEXEC);
    require(write(file, content.data(), content.size()) == ssize_t(content.size()), "the file is written");
    return "/proc/self/fd/" + std::to_string(file);
}

SFtpRequest request()
{
    SFtpRequest request;
    request.port = kControlPort;
    request.remotePath = "ftp://127.0.0.1:" + std::to_string(kControlPort) + "/dir/";
    request.remoteFileName = "old.bak";
    request.localPath = "/dev/null";
    request.userName = "user";
    request.password = "password";
    request.caCert = "none";
    return request;
}

// What all runs share: made with the first, and kept until the program ends.
struct Server
{
    const testserver::Certificate certificate = testserver::makeSelfSigned();
    const testserver::TlsContexts tls = testserver::TlsContexts(config());

    Server()
    {
        for (SSL_CTX* const context : {tls.control.get(), tls.data.get()}) {
            SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF); // otherwise it would grow
        }
        // Nothing is verified, but libcurl would read the machine's whole trust store for each connection.
        setenv("SFTPCLIENT_DEFAULT_TRUST", fileWith(certificate.certificatePem).c_str(), 1);
        live::setCertAuthSwitch(0);    // so that transfers go on without a certificate
        std::signal(SIGPIPE, SIG_IGN); // OpenSSL writes to clients that have left
        curl_global_init(CURL_GLOBAL_DEFAULT);
    }

    testserver::ServerConfig config() const
    {
        testserver::ServerConfig config;
        config.tls = testserver::TlsMode::Explicit;
        config.certificate = certificate;
        return config;
    }
};

const Server& server()
{
    static const Server server;
    return server;
}

} // namespace

const std::string& fileToSend()
{
    static const std::string path = fileWith(std::string(3000, 'u'));
    return path;
}

const std::string& serverCertificate() { return server().certificate.certificatePem; }

void runAgainst(const std::string& script,
                const std::function<void(const SFtpRequest& request, Network& network)>& client)
{
    Playback playback(script, server().tls);
    fileToSend();
    const int before = lowestFreeDescriptor();
    {
        Network network(playback);
        client(request(), network);
        network.pass(0); // the server's ends close
    }
    live::takeRecords(); // otherwise they would grow forever
    require(lowestFreeDescriptor() <= before, "all that was opened is closed");
}
