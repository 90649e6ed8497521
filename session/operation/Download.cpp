#include "operation/Operations.h"

#include "call/Failure.h"
#include "call/SetOption.h"
#include "connection/Transfer.h"
#include "files/LocalFiles.h"
#include "request/Digest.h"
#include "request/Text.h"

#include <algorithm>

namespace session {

namespace {

// libcurl takes the last digits of any reply to SIZE for the size, and ends the file after so many bytes.
void requireNumberAsSize(Transfer& transfer)
{
    curl_off_t size = -1;
    curl_easy_getinfo(transfer.handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    for (const std::string& line : transfer.replies().lines()) {
        if (size > 0 && line.compare(0, 4, "213 ") == 0 && sizeInReply(line) < 0) {
            throw refusal(CURLE_WEIRD_SERVER_REPLY, "the reply to SIZE holds no number");
        }
    }
}

DataSink sinkOf(ArrivingFile& file)
{
    return [&file](const char* bytes, std::size_t count) { return file.write(bytes, count); };
}

Failure tooLarge(std::int64_t limit)
{
    return refusal(CURLE_FILESIZE_EXCEEDED, "the file is larger than " + std::to_string(limit - 1) + " bytes");
}

// Identifies the file's content on the server: another content has another temporary name here. Empty where the server
// reports no size or no time: a file of the same size, changed in front of the end that is compared, would be mixed.
std::string versionOf(const Work& work, const RemoteEntry& there)
{
    if (there.size < 0 || !there.modified) {
        return {};
    }
    Digest digest;
    digest.add(work.access.identity().server);
    digest.add(work.access.request().userName);
    digest.add(work.access.target().url());
    digest.add(std::to_string(there.size));
    digest.add(std::to_string(there.modified->time_since_epoch().count()));
    constexpr std::size_t kDigits = 12;
    return inHex(digest.value()).substr(0, kDigits);
}

// Compares the last bytes of an earlier attempt with the server's.
class Overlap
{
public:
    explicit Overlap(std::string expected) : m_expected(std::move(expected)) {}

    /// Takes its part from the beginning of the bytes; false if they differ.
    bool take(const char*& bytes, std::size_t& count)
    {
        const std::size_t compared = std::min(count, m_expected.size() - m_done);
        const bool same = m_expected.compare(m_done, compared, bytes, compared) == 0;
        m_done += compared;
        bytes += compared;
        count -= compared;
        return same;
    }

private:
    std::string m_expected;
    std::size_t m_done = 0;
};

// Whether the server refuses to send the file, perhaps only from its middle on. A refusal for now (4xx) is none.
bool refusesFile(CURLcode code, const Replies& replies)
{
    return (code == CURLE_FTP_COULDNT_RETR_FILE || code == CURLE_REMOTE_FILE_NOT_FOUND) && replies.lastCode() >= 500;
}

Failure changedMeanwhile() { return refusal(CURLE_PARTIAL_FILE, "the file has changed on the server meanwhile"); }

// False if the earlier attempt cannot be continued.
bool goOn(const Work& work, ArrivingFile& file, std::int64_t size)
{
    const std::int64_t compared = std::min(file.size(), kOverlap);
    const std::int64_t offset = file.size() - compared;
    const std::string end = file.part(offset, static_cast<std::size_t>(compared));
    // A server that ignores REST sends the beginning, which would pass for the end.
    if (offset > 0 && !work.access.target().isSsh() && end == file.part(0, end.size())) {
        return false;
    }
    Overlap overlap(end);
    bool differs = false;
    Transfer transfer(work.connection, work.access, work.call);
    work.call.beginTransfer(size, offset);
    transfer.visit(work.access.target().url());
    transfer.receiveFrom(offset);
    transfer.receive([&](const char* bytes, std::size_t count) {
        differs = !overlap.take(bytes, count);
        if (!differs && file.size() + static_cast<std::int64_t>(count) > size) {
            file.startOver();
            throw changedMeanwhile();
        }
        return !differs && file.write(bytes, count);
    });
    const CURLcode code = transfer.tryToRun();
    const bool isRefused = refusesFile(code, transfer.replies());
    if (isRefused) {
        work.connection.cut(); // for the server, the offset may hold until the next transfer
    }
    if (differs || isRefused || code == CURLE_FTP_COULDNT_USE_REST || code == CURLE_BAD_DOWNLOAD_RESUME) {
        return false;
    }
    if (code != CURLE_OK) {
        throw transfer.failure(code);
    }
    work.call.finishing();
    work.call.report(true);
    return true;
}

void resume(const Work& work, const std::string& localPath, std::int64_t limit)
{
    ArrivingFile::requireFile(localPath);
    const std::optional<RemoteEntry> there = fileAt(work, work.access.target().url());
    if (!there) {
        throw refusal(CURLE_REMOTE_FILE_NOT_FOUND, "there is no such file on the server");
    }
    if (there->size >= limit) {
        throw tooLarge(limit);
    }
    ArrivingFile file(localPath, work.call, versionOf(work, *there));
    if (file.size() == 0 || file.size() > there->size || !goOn(work, file, there->size)) {
        file.startOver();
        download(work, sinkOf(file), limit);
    }
    if (there->size >= 0 && file.size() != there->size) {
        file.startOver();
        throw changedMeanwhile();
    }
    file.takePlace(work.access.options().syncDownload);
}

} // namespace

void download(const Work& work, const DataSink& sink, std::int64_t limit)
{
    Transfer transfer(work.connection, work.access, work.call);
    work.access.target().requireFile();
    work.call.beginTransfer(-1);
    transfer.visit(work.access.target().url());
    transfer.requireEnd();
    // libcurl checks the size that the server reports; if it reports none, the bytes are counted below.
    set(transfer.handle(), CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limit - 1));
    transfer.receive([&](const char* bytes, std::size_t count) {
        if (work.call.bytes() + static_cast<std::int64_t>(count) >= limit) {
            throw tooLarge(limit);
        }
        return sink(bytes, count);
    });
    transfer.run();
    requireNumberAsSize(transfer);
    work.call.finishing();
    work.call.report(true);
}

void downloadFile(const Work& work, const std::string& localPath, std::int64_t limit)
{
    work.access.target().requireFile();
    if (work.access.options().resume) {
        resume(work, localPath, limit);
        return;
    }
    ArrivingFile file(localPath, work.call);
    download(work, sinkOf(file), limit);
    file.takePlace(work.access.options().syncDownload);
}

} // namespace session
