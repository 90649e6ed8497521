#include "harness/Client.h"

#include "harness/OwnPorts.h"
#include "harness/Playback.h"
#include "harness/Require.h"

#include "support/LiveHost.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

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

SFtpRequest requestTo(std::uint16_t port)
{
    SFtpRequest request;
    request.port = port;
    request.remotePath = "ftp://127.0.0.1:" + std::to_string(port) + "/dir/";
    request.remoteFileName = "old.bak";
    request.localPath = "/dev/null";
    request.userName = "user";
    request.password = "password";
    request.caCert = "none";
    return request;
}

Playback& playback()
{
    // Made after libcurl is initialised, and kept until the program ends.
    static Playback server;
    static const bool prepared = [] {
        // Nothing is verified, but libcurl would read the machine's whole trust store for each connection.
        setenv("SFTPCLIENT_DEFAULT_TRUST", fileWith(server.certificatePem()).c_str(), 1);
        live::setCertAuthSwitch(0); // so that transfers go on without a certificate
        curl_global_init(CURL_GLOBAL_DEFAULT);
        allowPortsOnly(server.controlPort(), server.dataPort());
        return true;
    }();
    require(prepared, "libcurl is ready");
    return server;
}

} // namespace

const std::string& fileToSend()
{
    static const std::string path = fileWith(std::string(3000, 'u'));
    return path;
}

void runAgainst(const std::string& script, const std::function<void(const SFtpRequest& request)>& client)
{
    Playback& server = playback();
    server.load(script);
    fileToSend();
    const int before = lowestFreeDescriptor();
    client(requestTo(server.controlPort()));
    live::takeRecords(); // otherwise they would grow forever
    server.waitForEndOf(ownConnections());
    require(lowestFreeDescriptor() <= before, "all that was opened is closed");
}
