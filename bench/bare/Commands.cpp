#include "Bare.h"

namespace {

// The directory of a URL that names a port, as rename and delete want it.
std::string directoryOf(const std::string& url) { return url.substr(url.find('/', url.rfind(':'))); }

} // namespace

int bareRename(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    const Stream stream(fopen("/dev/null", "w+"));
    const std::string directory = directoryOf(request.remotePath);
    const std::string command = "rename " + directory + request.remoteFileName + " " + directory + request.localPath;
    const List commands(curl_slist_append(nullptr, command.c_str()));
    requireTls(handle, request);
    set(handle, CURLOPT_POSTQUOTE, commands.get());
    aim(handle, request);
    return curl_easy_perform(handle.get());
}

int bareDelete(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    const Stream stream(fopen("/dev/null", "w+"));
    const std::string command = "rm " + directoryOf(request.remotePath) + request.remoteFileName;
    const List commands(curl_slist_append(nullptr, command.c_str()));
    requireTls(handle, request);
    set(handle, CURLOPT_POSTQUOTE, commands.get());
    set(handle, CURLOPT_WRITEFUNCTION, writeToFile);
    set(handle, CURLOPT_WRITEDATA, stream.get());
    aim(handle, request);
    return curl_easy_perform(handle.get());
}

int bareTest(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    aim(handle, request);
    set(handle, CURLOPT_CONNECTTIMEOUT, 20L);
    set(handle, CURLOPT_NOSIGNAL, 1L);
    requireTls(handle, request);
    return curl_easy_perform(handle.get());
}
