#include "base/RequestOf.h"

#include "base/Checks.h"
#include "base/InputFile.h"
#include "base/UsageError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace {

constexpr char kNowhere[] = "/dev/null";

bool isForHost(const Arguments& arguments) { return arguments.asHost || arguments.operation == Operation::Doctor; }

bool isStream(const std::string& local) { return local == "-"; }

std::string remotePathOf(const Arguments& arguments, const RemoteUrl& url)
{
    if (arguments.operation == Operation::Put) {
        return url.forUpload(arguments.local);
    }
    if (!isForHost(arguments)) {
        return url.text();
    }
    switch (arguments.operation) {
    case Operation::List:
    case Operation::Doctor:
        return url.forListing();
    case Operation::Move:
    case Operation::Remove:
        return url.forDirectoryCommand(arguments.port);
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
        return arguments.local.empty() ? url.fileName(!isForHost(arguments)) : arguments.local;
    default:
        return arguments.local;
    }
}

std::string certificateOf(const Arguments& arguments, const RemoteUrl& url)
{
    if (arguments.ca == "none") {
        return arguments.ca;
    }
    if (!arguments.ca.empty()) {
        return contentsOf(arguments.ca, "The CA certificate", "name a PEM or DER file.");
    }
    if (isForHost(arguments) && arguments.operation != Operation::Put && !url.isSsh()) {
        throw UsageError("The server's CA certificate is missing: give --ca FILE or --ca none.");
    }
    return {};
}

void checkNames(const Arguments& arguments)
{
    // The library puts them into a command that the server splits at each blank.
    const auto check = isForHost(arguments) ? refuseAllButOneWord : refuseAllButAName;
    if (arguments.operation == Operation::Move) {
        check("OLD", arguments.remoteName);
        check("NEW", arguments.newName);
    } else if (arguments.operation == Operation::Remove) {
        check("NAME", arguments.remoteName);
    }
}

// "a pipe", or nothing for a regular file, or where there is none.
std::string oddKindOf(const std::string& file)
{
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0 || S_ISREG(status.st_mode)) {
        return {};
    }
    if (S_ISDIR(status.st_mode)) {
        return "a directory";
    }
    if (S_ISFIFO(status.st_mode)) {
        return "a pipe";
    }
    return S_ISSOCK(status.st_mode) ? "a socket" : "a device";
}

// As the files of /proc are, which say 0.
bool hidesItsSize(const std::string& file)
{
    struct stat status = {};
    std::string byte;
    return stat(file.c_str(), &status) == 0 && status.st_size == 0 && !InputFile(file).readWhole(0, byte).empty();
}

// As many bytes are sent as the file's size says.
void checkSource(const std::string& file, bool forHost)
{
    const std::string kind = oddKindOf(file);
    if (!kind.empty()) {
        throw UsageError(file + " is " + kind + ": put sends regular files only; write the contents into one first" +
                         (forHost ? "." : ", or to standard input, with - for LOCAL."));
    }
    if (access(file.c_str(), R_OK) != 0) {
        throw UsageError("The file " + file + " cannot be read (" + std::strerror(errno) + "): name one that can be.");
    }
    if (hidesItsSize(file)) {
        throw UsageError(file + " has no size: copy it into a regular file first.");
    }
}

// Whether the path leads through /proc, as /dev/stdout does: to an open file of this process. Standard output goes
// nowhere while the library works.
bool isOpenFile(std::filesystem::path path)
{
    constexpr int kMostLinks = 40;
    std::error_code error;
    for (int i = 0; i < kMostLinks; ++i) {
        const std::filesystem::path folder = std::filesystem::weakly_canonical(path.parent_path(), error);
        if (folder.string().compare(0, 6, "/proc/") == 0) {
            return true;
        }
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) {
            return false;
        }
        path = folder / target;
    }
    return false;
}

void checkTarget(const Arguments& arguments, const std::string& file)
{
    const std::string remedy = arguments.operation == Operation::List
                                   ? ": name a regular file, or leave it out for the names on standard output."
                               : arguments.asHost ? ": name a regular file."
                                                  : ": name a regular file, or - for standard output.";
    if (isOpenFile(file)) {
        throw UsageError(file + " is an open file of the command itself" + remedy);
    }
    const std::string kind = oddKindOf(file);
    if (!kind.empty() && file != kNowhere) {
        throw UsageError(file + " is " + kind + remedy);
    }
    const std::string folder = file.substr(0, file.rfind('/') + 1) + ".";
    const bool canBe = access(file.c_str(), W_OK) == 0 || (errno == ENOENT && access(folder.c_str(), W_OK | X_OK) == 0);
    if (!canBe) {
        throw UsageError("The file " + file + " cannot be written (" + std::strerror(errno) +
                         "): name one that can be.");
    }
}

// The library answers with nothing but a 2, or loses bytes without a word.
void checkLocalFile(const Arguments& arguments, const std::string& file)
{
    const Operation operation = arguments.operation;
    if (operation == Operation::Put) {
        checkSource(file, arguments.asHost);
    } else if (operation == Operation::Get || (operation == Operation::List && !file.empty())) {
        checkTarget(arguments, file);
    }
}

void checkStream(const Arguments& arguments)
{
    if (arguments.operation == Operation::Get && arguments.json) {
        throw UsageError("With - the file goes to standard output: leave --json out.");
    }
    if (arguments.operation == Operation::Put && arguments.passwordFromInput) {
        throw UsageError("With - the file comes from standard input: give the password in another way than with "
                         "--password-stdin.");
    }
}

} // namespace

SFtpRequest requestOf(const Arguments& arguments)
{
    checkNames(arguments);
    const RemoteUrl& url = arguments.remote;
    SFtpRequest request;
    request.remotePath = remotePathOf(arguments, url);
    request.remoteFileName = arguments.remoteName;
    request.localPath = localPathOf(arguments, url);
    const bool mayBeStream = arguments.operation == Operation::Get || arguments.operation == Operation::Put;
    if (mayBeStream && !arguments.asHost && isStream(request.localPath)) {
        checkStream(arguments);
    } else {
        checkLocalFile(arguments, request.localPath);
    }
    if (arguments.isLong && !arguments.local.empty()) {
        throw UsageError("With --long the listing goes to standard output: leave LOCAL out.");
    }
    request.caCert = certificateOf(arguments, url);
    request.port = url.port(arguments.port);
    return request;
}
