#include "Operations.h"

#include "Failure.h"
#include "SetOption.h"
#include "Transfer.h"

namespace session {

namespace {

// libcurl takes the last digits of whatever stands there for the size, and ends the file after so many bytes.
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

} // namespace

void download(const Work& work, const DataSink& sink, std::int64_t limit)
{
    Transfer transfer(work.connection, work.access, work.call);
    if (work.access.target().isDirectory()) {
        throw refusal(CURLE_URL_MALFORMAT, "remotePath ends in \"/\" and so names a directory");
    }
    work.call.beginTransfer(-1);
    transfer.visit(work.access.target().url());
    // libcurl goes by the size that the server tells; where it tells none, the bytes are counted.
    set(transfer.handle(), CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limit - 1));
    transfer.receive([&](const char* bytes, std::size_t count) {
        if (work.call.bytes() + static_cast<std::int64_t>(count) >= limit) {
            throw refusal(CURLE_FILESIZE_EXCEEDED, "the file is larger than " + std::to_string(limit - 1) + " bytes");
        }
        return sink(bytes, count);
    });
    transfer.run();
    requireNumberAsSize(transfer);
    work.call.finishing();
    work.call.report(true);
}

} // namespace session
