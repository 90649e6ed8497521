#include "SFtpSession.h"

#include "Engine.h"
#include "call/Failure.h"
#include "files/LocalFiles.h"
#include "operation/Operations.h"

#include <istream>
#include <ostream>
#include <utility>

using namespace session;

namespace {

// In bytes; a file of exactly the limit is refused. The same rule as the library's.
constexpr std::int64_t kRetentionDatabaseLimit = 104857600;
constexpr std::int64_t kFileLimit = 53687091200;

std::int64_t sizeLimitOf(const std::string& localPath)
{
    return localPath.substr(localPath.rfind('/') + 1) == "RetentionDB.db" ? kRetentionDatabaseLimit : kFileLimit;
}

void requireFunction(const char* name, bool isThere)
{
    if (!isThere) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, std::string(name) + " is empty");
    }
}

// To a stream that throws on failure, too few bytes are one; here they are its end.
void readUpTo(std::istream& in, char* bytes, std::streamsize count)
{
    try {
        in.read(bytes, count);
    } catch (const std::ios_base::failure&) {
        if (in.bad() || !in.eof()) {
            throw;
        }
    }
}

} // namespace

class SFtpSession::Engine : public session::Engine
{
public:
    using session::Engine::Engine;
};

SFtpSession::SFtpSession(SessionOptions options) : m_engine(std::make_unique<Engine>(std::move(options))) {}

SFtpSession::~SFtpSession() = default;

int SFtpSession::Listsftpdir(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("Listsftpdir", request, errorText, [&](const Work& work) {
        ArrivingFile file(request.localPath, work.call);
        listNames(work, [&file](const char* bytes, std::size_t count) { return file.write(bytes, count); });
        file.takePlace(work.access.options().syncDownload);
    });
}

int SFtpSession::DownLoadSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("DownLoadSFtpFile", request, errorText, [&](const Work& work) {
        downloadFile(work, request.localPath, sizeLimitOf(request.localPath));
    });
}

int SFtpSession::ReNameSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("ReNameSFtpFile", request, errorText, renameFile);
}

int SFtpSession::DelSFtpFile(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("DelSFtpFile", request, errorText, deleteFile);
}

int SFtpSession::UploadFileToSFtpServer(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("UploadFileToSFtpServer", request, errorText,
                          [&](const Work& work) { uploadFile(work, request.localPath); });
}

int SFtpSession::TestSConnect(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("TestSConnect", request, errorText, test);
}

int SFtpSession::ListEntries(const SFtpRequest& request, std::vector<RemoteEntry>& entries, std::string& errorText)
{
    return m_engine->call("ListEntries", request, errorText, [&](const Work& work) { entries = listEntries(work); });
}

int SFtpSession::StatEntry(const SFtpRequest& request, RemoteEntry& entry, std::string& errorText)
{
    return m_engine->call("StatEntry", request, errorText, [&](const Work& work) { entry = statEntry(work); });
}

int SFtpSession::ReadModified(const SFtpRequest& request, std::chrono::system_clock::time_point& modified,
                              std::string& errorText)
{
    return m_engine->call("ReadModified", request, errorText, [&](const Work& work) { modified = readModified(work); });
}

int SFtpSession::SetModified(const SFtpRequest& request, std::chrono::system_clock::time_point modified,
                             std::string& errorText)
{
    return m_engine->call("SetModified", request, errorText, [&](const Work& work) { setModified(work, modified); });
}

int SFtpSession::ReadChecksum(const SFtpRequest& request, RemoteChecksum& checksum, std::string& errorText)
{
    return m_engine->call("ReadChecksum", request, errorText, [&](const Work& work) { checksum = readChecksum(work); });
}

int SFtpSession::MakeSFtpDir(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("MakeSFtpDir", request, errorText, makeDirectory);
}

int SFtpSession::RemoveSFtpDir(const SFtpRequest& request, std::string& errorText)
{
    return m_engine->call("RemoveSFtpDir", request, errorText, removeDirectory);
}

int SFtpSession::DownLoadTo(const SFtpRequest& request, const DataSink& sink, std::string& errorText)
{
    return m_engine->call("DownLoadTo", request, errorText, [&](const Work& work) {
        requireFunction("sink", sink != nullptr);
        download(work, sink, kFileLimit);
    });
}

int SFtpSession::DownLoadTo(const SFtpRequest& request, std::ostream& out, std::string& errorText)
{
    return m_engine->call("DownLoadTo", request, errorText, [&](const Work& work) {
        download(
            work,
            [&out](const char* bytes, std::size_t count) {
                return static_cast<bool>(out.write(bytes, static_cast<std::streamsize>(count)));
            },
            kFileLimit);
        // Until then, the last bytes may be in the stream's buffer alone.
        if (!out.flush()) {
            throw refusal(CURLE_WRITE_ERROR, "the stream cannot be written");
        }
    });
}

int SFtpSession::UploadFrom(const SFtpRequest& request, const DataSource& source, std::string& errorText,
                            std::int64_t size)
{
    return m_engine->call("UploadFrom", request, errorText, [&](const Work& work) {
        requireFunction("source", source != nullptr);
        if (size < -1) {
            throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, "size is " + std::to_string(size));
        }
        upload(work, source, size);
    });
}

int SFtpSession::UploadFrom(const SFtpRequest& request, std::istream& in, std::string& errorText, std::int64_t size)
{
    return UploadFrom(
        request,
        [&in](char* bytes, std::size_t count) {
            readUpTo(in, bytes, static_cast<std::streamsize>(count));
            if (in.bad() || (in.fail() && !in.eof())) {
                throw refusal(CURLE_READ_ERROR, "the stream cannot be read");
            }
            return static_cast<std::size_t>(in.gcount());
        },
        errorText, size);
}

void SFtpSession::Cancel() noexcept { m_engine->stop().turnOn(); }

void SFtpSession::ClearCancel() noexcept { m_engine->stop().turnOff(); }
