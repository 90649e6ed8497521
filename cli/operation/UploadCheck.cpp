#include "operation/UploadCheck.h"

#include "base/RemoteUrl.h"

#include <boost/algorithm/string/predicate.hpp>
#include <curl/curl.h>

#include <charconv>
#include <memory>

namespace {

constexpr char kSizeReply[] = "213 ";

size_t dropBody(char* /*data*/, size_t /*one*/, size_t size, void* /*nothing*/) { return size; }

size_t keepLastSize(char* line, size_t /*one*/, size_t size, void* kept)
{
    const std::string reply(line, size);
    if (reply.compare(0, sizeof kSizeReply - 1, kSizeReply) == 0) {
        *static_cast<std::string*>(kept) = reply;
    }
    return size;
}

size_t refuseBody(char* /*data*/, size_t /*one*/, size_t /*size*/, void* /*nothing*/) { return 0; }

// SFTP has numbers in its replies, not text: libcurl's word is good, but it makes no difference between an empty file
// and an unknown size. An empty one can be fetched without a single byte.
std::optional<std::int64_t> sizeOfSsh(CURL* handle)
{
    curl_off_t bytes = -1;
    curl_easy_getinfo(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &bytes);
    if (bytes >= 0) {
        return bytes;
    }
    curl_easy_setopt(handle, CURLOPT_NOBODY, 0L);
    // libcurl distrusts a kept connection that brings no byte, and 8.14 then fails.
    curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, refuseBody);
    return curl_easy_perform(handle) == CURLE_OK ? std::optional<std::int64_t>(0) : std::nullopt;
}

} // namespace

std::optional<std::int64_t> sizeInReply(const std::string& reply)
{
    const std::string::size_type end = reply.find_last_not_of("\r\n") + 1;
    const std::string::size_type begin = sizeof kSizeReply - 1;
    if (reply.compare(0, begin, kSizeReply) != 0 || end <= begin) {
        return std::nullopt;
    }
    std::int64_t bytes = -1;
    const std::from_chars_result read = std::from_chars(&reply[begin], reply.data() + end, bytes);
    return read.ec == std::errc() && read.ptr == reply.data() + end && bytes >= 0 ? std::optional<std::int64_t>(bytes)
                                                                                  : std::nullopt;
}

bool canCompareSize(const std::string& url) { return !boost::iends_with(url, ";type=a"); }

RemoteSize askSize(const SFtpRequest& request)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
    if (!handle) {
        return {std::nullopt, "libcurl has no handle left"};
    }
    std::string reply;
    curl_easy_setopt(handle.get(), CURLOPT_URL, request.remotePath.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PORT, static_cast<long>(request.port));
    curl_easy_setopt(handle.get(), CURLOPT_USERNAME, request.userName.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PASSWORD, request.password.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_NOBODY, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, dropBody);
    curl_easy_setopt(handle.get(), CURLOPT_HEADERFUNCTION, keepLastSize);
    curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &reply);
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    const CURLcode result = curl_easy_perform(handle.get());
    if (result != CURLE_OK) {
        return {std::nullopt, std::string("asking for it failed: ") + curl_easy_strerror(result)};
    }
    const std::optional<std::int64_t> bytes =
        RemoteUrl(request.remotePath).isSsh() ? sizeOfSsh(handle.get()) : sizeInReply(reply);
    return {bytes, bytes ? "" : "the server does not report it"};
}
