#ifndef SFTPCLIENT_SESSION_OPERATIONS_H
#define SFTPCLIENT_SESSION_OPERATIONS_H

#include "call/Call.h"
#include "connection/Connection.h"
#include "request/Access.h"

#include <SFtpSession.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The operations of a session, one function each, over a connection reserved for the call. Each throws `Failure`, and
/// what the caller's functions throw.
namespace session {

/// What an operation works with.
struct Work
{
    Connection& connection;
    Access& access;
    Call& call;
};

void test(const Work& work);
void renameFile(const Work& work);
void deleteFile(const Work& work);
void makeDirectory(const Work& work);
void removeDirectory(const Work& work);

/// The names in the directory, one per line.
void listNames(const Work& work, const DataSink& sink);
std::vector<RemoteEntry> listEntries(const Work& work);
RemoteEntry statEntry(const Work& work);
std::chrono::system_clock::time_point readModified(const Work& work);
void setModified(const Work& work, std::chrono::system_clock::time_point modified);
RemoteChecksum readChecksum(const Work& work);

/// The file at this URL: its size and time, as far as the server reports them, without its name. Nothing if it does not
/// exist.
std::optional<RemoteEntry> fileAt(const Work& work, const std::string& url);

/// `limit`: the smallest size that is refused, with 63.
void download(const Work& work, const DataSink& sink, std::int64_t limit);
void downloadFile(const Work& work, const std::string& localPath, std::int64_t limit);
void upload(const Work& work, const DataSource& source, std::int64_t size);
void uploadFile(const Work& work, const std::string& localPath);

/// How many of the last bytes must match before a transfer is resumed.
constexpr std::int64_t kOverlap = 65536;

} // namespace session

#endif
