#include "RequestOf.h"

#include "Checks.h"
#include "RemoteUrl.h"
#include "UsageError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {

std::string remotePathOf(const Arguments& arguments, const RemoteUrl& url)
{
    switch (arguments.operation) {
    case Operation::List:
    case Operation::Doctor:
        return url.forListing();
    case Operation::Move:
    case Operation::Remove:
        return url.forDirectoryCommand(arguments.port);
    case Operation::Put:
        return url.forUpload(arguments.local);
    default:
        return url.text();
    }
}

std::string localPathOf(const Arguments& arguments, const RemoteUrl& url)
{
    switch (arguments.operation) {
    case Operation::Move:
        return arguments.newName;
    case Operation::Get:
        return arguments.local.empty() ? url.fileName() : arguments.local;
    default:
        return arguments.local;
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
    if (arguments.operation == Operation::Move) {
        refuseAllButOneWord("OLD", arguments.remoteName);
        refuseAllButOneWord("NEW", arguments.newName);
    } else if (arguments.operation == Operation::Remove) {
        refuseAllButOneWord("NAME", arguments.remoteName);
    }
}

void requireReadable(const std::string& file)
{
    if (access(file.c_str(), R_OK) != 0) {
        throw UsageError("The file " + file + " cannot be read (" + std::strerror(errno) + "): name one that can be.");
    }
}

void requireWritable(const std::string& file)
{
    const std::string folder = file.substr(0, file.rfind('/') + 1) + ".";
    const bool canBe = access(file.c_str(), W_OK) == 0 || (errno == ENOENT && access(folder.c_str(), W_OK | X_OK) == 0);
    if (!canBe) {
        throw UsageError("The file " + file + " cannot be written (" + std::strerror(errno) +
                         "): name one that can be.");
    }
}

// The library answers with nothing but a 2.
void checkLocalFile(Operation operation, const std::string& file)
{
    const bool isRead = operation == Operation::Put;
    const bool isWritten = operation == Operation::Get || (operation == Operation::List && !file.empty());
    if (!isRead && !isWritten) {
        return;
    }
    struct stat status = {};
    if (stat(file.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        throw UsageError(file + " is a directory: name the file itself.");
    }
    if (isRead) {
        requireReadable(file);
    } else {
        requireWritable(file);
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
    request.localPath = localPathOf(arguments, url);
    checkLocalFile(arguments.operation, request.localPath);
    request.caCert = certificateOf(arguments, url);
    request.port = url.port(arguments.port);
    return request;
}
