// A whole session with a server whose replies are the fuzzer's: the first byte chooses the operation, the rest is the
// script of the playback, which also says where TLS begins. No certificate is verified, so that every valid handshake
// succeeds.
#include "harness/OwnPorts.h"
#include "harness/Playback.h"
#include "harness/Require.h"

#include "support/LiveHost.h"

#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
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

const std::string& fileToSend()
{
    static const std::string path = fileWith(std::string(3000, 'u'));
    return path;
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

int codeOf(const boost::shared_ptr<ISFtpResponse>& response) { return response ? response->GetErrCode() : -1; }

int operate(uint8_t choice, SFtpRequest request)
{
    const boost::shared_ptr<ISFtpClient> client = ISFtpClient::CreateClient();
    std::string errorText;
    switch (choice % 8) { // "0" is the first, for inputs written by hand
    case 0:
        return client->TestSConnect(request, 0);
    case 1:
        return codeOf(client->Listsftpdir(request, 1));
    case 2:
        request.remotePath += "a.bak";
        return codeOf(client->DownLoadSFtpFile(request, 0));
    case 3:
        request.remotePath += "a.bak";
        return SFtpClient().DownLoadSFtpFile(request, errorText);
    case 4:
        request.localPath = "new.bak";
        return codeOf(client->ReNameSFtpFile(request, 0));
    case 5:
        return codeOf(client->DelSFtpFile(request, 0));
    default:
        request.remotePath += "up.bak";
        request.localPath = fileToSend();
        return codeOf(client->UploadFileToSFtpServer(request, 0));
    }
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

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    Playback& server = playback();
    server.load(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    fileToSend();
    const int before = lowestFreeDescriptor();
    const int code = operate(data[0], requestTo(server.controlPort()));
    live::takeRecords(); // otherwise they would grow forever
    require(code >= -1 && code < CURL_LAST, "the result is one of libcurl's or -1");
    server.waitForEndOf(ownConnections());
    require(lowestFreeDescriptor() <= before, "all that was opened is closed");
    return 0;
}
