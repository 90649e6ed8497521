#include "Bare.h"

#include <sys/stat.h>

namespace {

size_t appendToText(void* bytes, size_t size, size_t count, void* text)
{
    static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), size * count);
    return size * count;
}

Stream openUnbuffered(const std::string& path)
{
    Stream stream(fopen(path.c_str(), "w+"));
    if (stream) {
        static_cast<void>(setvbuf(stream.get(), nullptr, _IONBF, 0));
    }
    return stream;
}

// The listing's options, on a handle that is not performed yet.
void setListing(const Handle& handle, const SFtpRequest& request, const Stream& stream)
{
    requireTls(handle, request);
    aim(handle, request);
    set(handle, CURLOPT_FTP_RESPONSE_TIMEOUT, 90L);
    set(handle, CURLOPT_DIRLISTONLY, 1L);
    set(handle, CURLOPT_WRITEFUNCTION, writeToFile);
    set(handle, CURLOPT_WRITEDATA, stream.get());
}

} // namespace

int bareSizeCheck(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    set(handle, CURLOPT_VERBOSE, 1L);
    aim(handle, request);
    set(handle, CURLOPT_NOPROGRESS, 1L);
    set(handle, CURLOPT_NOBODY, 1L);
    set(handle, CURLOPT_HEADER, 1L);
    set(handle, CURLOPT_FILETIME, 1L);
    const CURLcode code = curl_easy_perform(handle.get());
    curl_off_t size = -1;
    curl_easy_getinfo(handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    return size == -1 ? -1 : code;
}

int bareDownload(const SFtpRequest& request)
{
    const int checked = bareSizeCheck(request);
    const Handle handle(curl_easy_init());
    const Stream stream = openUnbuffered(request.localPath);
    if (checked != 0 || !stream) {
        return -1;
    }
    requireTls(handle, request);
    aim(handle, request);
    set(handle, CURLOPT_WRITEFUNCTION, writeToFile);
    set(handle, CURLOPT_WRITEDATA, stream.get());
    set(handle, CURLOPT_CONNECTTIMEOUT, 20L);
    set(handle, CURLOPT_NOSIGNAL, 1L);
    return curl_easy_perform(handle.get());
}

int bareUpload(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    const Stream stream(fopen(request.localPath.c_str(), "rb"));
    struct stat status = {};
    if (!stream || fstat(fileno(stream.get()), &status) != 0) {
        return -1;
    }
    std::string received;
    set(handle, CURLOPT_WRITEFUNCTION, appendToText);
    set(handle, CURLOPT_WRITEDATA, &received);
    set(handle, CURLOPT_UPLOAD, 1L);
    aim(handle, request);
    set(handle, CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR_RETRY));
    set(handle, CURLOPT_CONNECTTIMEOUT, 20L);
    set(handle, CURLOPT_NOSIGNAL, 1L);
    set(handle, CURLOPT_READDATA, stream.get());
    set(handle, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(status.st_size));
    return curl_easy_perform(handle.get());
}

int bareList(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    const Stream stream = openUnbuffered(request.localPath);
    if (!stream) {
        return -1;
    }
    setListing(handle, request, stream);
    return curl_easy_perform(handle.get());
}

int bareListTwice(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    const Stream stream = openUnbuffered(request.localPath);
    if (!stream) {
        return -1;
    }
    setListing(handle, request, stream);
    const CURLcode first = curl_easy_perform(handle.get());
    return first != CURLE_OK ? first : curl_easy_perform(handle.get());
}
