#include "harness/SessionCalls.h"

#include "harness/Client.h"
#include "harness/Require.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <vector>

namespace {

constexpr std::chrono::system_clock::time_point kTime{std::chrono::hours(24 * 365 * 50)};

std::filesystem::path folder()
{
    static const TemporaryFolder folder;
    return folder.path();
}

void requireName(const std::string& name)
{
    require(!name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
                name.find('\0') == std::string::npos,
            "an entry's name leads nowhere else");
}

int list(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    std::vector<RemoteEntry> entries;
    const int code = session.ListEntries(request, entries, errorText);
    require(code == 0 || entries.empty(), "a failure leaves the entries alone");
    for (const RemoteEntry& entry : entries) {
        requireName(entry.name);
        require(entry.size >= -1, "a size is a number of bytes, or unknown");
    }
    return code;
}

int readChecksum(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    RemoteChecksum checksum;
    const int code = session.ReadChecksum(request, checksum, errorText);
    const std::string::size_type length = checksum.kind == ChecksumKind::Sha256 ? 64 : 8;
    require(code != 0 ||
                (checksum.digits.size() == length &&
                 std::all_of(checksum.digits.begin(), checksum.digits.end(),
                             [](unsigned char digit) { return std::isxdigit(digit) && !std::isupper(digit); })),
            "a checksum has so many hexadecimal digits in lower case");
    return code;
}

int downloadFile(SFtpSession& session, SFtpRequest request, std::string& errorText)
{
    const std::filesystem::path file = folder() / "a.bak";
    request.localPath = file;
    const bool wasThere = std::filesystem::exists(file);
    const int code = session.DownLoadSFtpFile(request, errorText);
    require(std::filesystem::exists(file) == (wasThere || code == 0), "a file appears only with a success");
    return code;
}

int operateOnFile(unsigned operation, SFtpSession& session, SFtpRequest request, std::string& errorText)
{
    std::stringstream content(std::string(3000, 's'));
    std::chrono::system_clock::time_point modified;
    RemoteEntry entry;
    request.remotePath += "a.bak";
    switch (operation) {
    case 1:
        return session.StatEntry(request, entry, errorText);
    case 2:
        return session.DownLoadTo(request, content, errorText);
    case 3:
        return downloadFile(session, request, errorText);
    case 4:
        return session.UploadFrom(request, content, errorText);
    case 5:
        request.localPath = fileToSend();
        return session.UploadFileToSFtpServer(request, errorText);
    case 8:
        return session.MakeSFtpDir(request, errorText);
    case 11:
        return session.RemoveSFtpDir(request, errorText);
    case 12:
        return session.ReadModified(request, modified, errorText);
    case 13:
        return session.SetModified(request, kTime, errorText);
    default:
        return readChecksum(session, request, errorText);
    }
}

} // namespace

int operate(unsigned operation, SFtpSession& session, SFtpRequest request, std::string& errorText)
{
    switch (operation) {
    case 0:
        return list(session, request, errorText);
    case 6:
        request.localPath = "new.bak";
        return session.ReNameSFtpFile(request, errorText);
    case 7:
        return session.DelSFtpFile(request, errorText);
    case 9:
        return session.TestSConnect(request, errorText);
    case 10:
        return session.Listsftpdir(request, errorText);
    default:
        return operateOnFile(operation, session, request, errorText);
    }
}

// What a failed download has left for the next attempt would change the next run.
void emptyFolder()
{
    for (const auto& each : std::filesystem::directory_iterator(folder())) {
        std::filesystem::remove(each.path());
    }
}
