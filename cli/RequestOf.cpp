#include "RequestOf.h"

#include "Checks.h"
#include "RemoteUrl.h"
#include "UsageError.h"

#include <fstream>
#include <sstream>

namespace {

std::string remotePathOf(const Arguments& arguments, const RemoteUrl& url)
{
    switch (arguments.operation) {
    case Operation::List:
        return url.forListing();
    case Operation::Move:
    case Operation::Remove:
        return url.forDirectoryCommand(arguments.port);
    default:
        return url.text();
    }
}

std::string readCertificate(const std::string& file)
{
    const std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    // Fails without a single byte, too.
    if (!(bytes << stream.rdbuf())) {
        throw UsageError("The CA certificate " + file + " cannot be read or is empty: name a PEM or DER file.");
    }
    return bytes.str();
}

std::string certificateOf(const Arguments& arguments, const RemoteUrl& url)
{
    if (arguments.ca == "none") {
        return arguments.ca;
    }
    if (!arguments.ca.empty()) {
        return readCertificate(arguments.ca);
    }
    if (arguments.operation != Operation::Put && !url.isSsh()) {
        throw UsageError("The server's CA certificate is missing: give --ca FILE or --ca none.");
    }
    return {};
}

void checkNames(const Arguments& arguments)
{
    refuseControlBytes("--user", arguments.user);
    // The library joins user and password with a ":", and libcurl takes the first one for that.
    if (arguments.user.empty() || arguments.user.find(':') != std::string::npos) {
        throw UsageError("--user must not be empty or hold a \":\".");
    }
    if (arguments.operation == Operation::Move) {
        refuseAllButOneWord("OLD", arguments.remoteName);
        refuseAllButOneWord("NEW", arguments.newName);
    } else if (arguments.operation == Operation::Remove) {
        refuseAllButOneWord("NAME", arguments.remoteName);
    }
}

} // namespace

SFtpRequest requestOf(const Arguments& arguments)
{
    checkNames(arguments);
    const RemoteUrl url(arguments.url);
    SFtpRequest request;
    request.remotePath = remotePathOf(arguments, url);
    request.remoteFileName = arguments.remoteName;
    request.localPath = arguments.operation == Operation::Move ? arguments.newName : arguments.local;
    request.userName = arguments.user;
    request.caCert = certificateOf(arguments, url);
    request.port = url.port(arguments.port);
    return request;
}
