#include "OperationCalls.h"

#include "support/Memory.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr char kSource[] = "the bytes of a source";
constexpr std::time_t kTime = 1767323045; // 2026-01-02 03:04:05

template <int (SFtpSession::*Function)(const SFtpRequest&, std::string&)>
int plain(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    return (session.*Function)(request, errorText);
}

std::string textOf(const RemoteEntry& entry)
{
    constexpr const char* kKinds[] = {"file", "directory", "other"};
    const std::string time =
        entry.modified ? " at " + std::to_string(std::chrono::system_clock::to_time_t(*entry.modified)) : "";
    return "[" + entry.name + " " + kKinds[static_cast<int>(entry.kind)] + " " + std::to_string(entry.size) + time +
           "]";
}

int listEntries(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    std::vector<RemoteEntry> entries;
    const int result = session.ListEntries(request, entries, errorText);
    const memory::Pause pause;
    lastGot().clear();
    for (const RemoteEntry& each : entries) {
        lastGot() += textOf(each);
    }
    return result;
}

int statEntry(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    RemoteEntry entry;
    const int result = session.StatEntry(request, entry, errorText);
    const memory::Pause pause;
    lastGot() = textOf(entry);
    return result;
}

int readModified(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    std::chrono::system_clock::time_point time;
    const int result = session.ReadModified(request, time, errorText);
    const memory::Pause pause;
    lastGot() = std::to_string(std::chrono::system_clock::to_time_t(time));
    return result;
}

int setModified(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    return session.SetModified(request, std::chrono::system_clock::from_time_t(kTime) + std::chrono::milliseconds(999),
                               errorText);
}

int readChecksum(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    RemoteChecksum checksum;
    const int result = session.ReadChecksum(request, checksum, errorText);
    const memory::Pause pause;
    lastGot() = (checksum.kind == ChecksumKind::Crc32 ? "CRC-32 " : "SHA-256 ") + checksum.digits;
    return result;
}

int downLoadTo(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    {
        const memory::Pause pause;
        lastGot().clear();
    }
    const auto keep = [](const char* bytes, std::size_t count) {
        const memory::Pause pause;
        lastGot().append(bytes, count);
        return true;
    };
    return session.DownLoadTo(request, keep, errorText);
}

int uploadFrom(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    std::size_t at = 0;
    const auto give = [&at](char* bytes, std::size_t count) {
        const std::size_t given = std::string_view(kSource).copy(bytes, count, at);
        at += given;
        return given;
    };
    return session.UploadFrom(request, give, errorText);
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const OperationCall& call) { return stream << call.function; }

std::string& lastGot()
{
    static std::string instance;
    return instance;
}

const std::vector<OperationCall>& operationCalls()
{
    static const std::vector<OperationCall> calls = {
        {"Listsftpdir", plain<&SFtpSession::Listsftpdir>},
        {"DownLoadSFtpFile", plain<&SFtpSession::DownLoadSFtpFile>},
        {"ReNameSFtpFile", plain<&SFtpSession::ReNameSFtpFile>},
        {"DelSFtpFile", plain<&SFtpSession::DelSFtpFile>},
        {"UploadFileToSFtpServer", plain<&SFtpSession::UploadFileToSFtpServer>},
        {"TestSConnect", plain<&SFtpSession::TestSConnect>},
        {"ListEntries", listEntries},
        {"StatEntry", statEntry},
        {"ReadModified", readModified},
        {"SetModified", setModified},
        {"ReadChecksum", readChecksum},
        {"MakeSFtpDir", plain<&SFtpSession::MakeSFtpDir>},
        {"RemoveSFtpDir", plain<&SFtpSession::RemoveSFtpDir>},
        {"DownLoadTo", downLoadTo},
        {"UploadFrom", uploadFrom},
    };
    return calls;
}

const OperationCall& operationCall(const std::string& function)
{
    return *std::find_if(operationCalls().begin(), operationCalls().end(),
                         [&function](const OperationCall& each) { return each.function == function; });
}
