#include "request/Target.h"

#include "call/Failure.h"
#include "request/Text.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <new>

namespace session {

namespace {

constexpr std::uint32_t kHighestPort = 65535;
constexpr char kCodedSlash[] = "%2F";

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

// To libcurl "?", "#" and ";" begin a query, a fragment or a transfer type, and the name would end there, as that of
// another file. A blank is encoded, too, because after a "?" libcurl turns it into a "+".
std::string withNamesAlone(const std::string& url)
{
    const std::string::size_type host = url.find_first_not_of('/', url.find(':') + 1);
    const std::string::size_type path = url.find_first_of("/?#", host);
    if (host == std::string::npos || path == std::string::npos) {
        return url;
    }
    std::string whole = url.substr(0, path) + (url[path] == '/' ? "" : "/");
    for (const char each : url.substr(path)) {
        whole += std::string_view("?#; ").find(each) != std::string_view::npos ? percentEncoded({&each, 1})
                                                                               : std::string(1, each);
    }
    return whole;
}

Url parsed(const std::string& text)
{
    Url url(curl_url(), curl_url_cleanup);
    if (!url) {
        throw std::bad_alloc();
    }
    const CURLUcode code = curl_url_set(url.get(), CURLUPART_URL, withNamesAlone(text).c_str(),
                                        CURLU_PATH_AS_IS | CURLU_NON_SUPPORT_SCHEME | CURLU_URLENCODE);
    if (code == CURLUE_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    if (code != CURLUE_OK) {
        throw refusal(CURLE_URL_MALFORMAT,
                      std::string("remotePath cannot be read as a URL (") + curl_url_strerror(code) + ")");
    }
    return url;
}

std::string partOf(const Url& url, CURLUPart part, unsigned flags = 0)
{
    char* text = nullptr;
    const CURLUcode code = curl_url_get(url.get(), part, &text, flags);
    if (code == CURLUE_OUT_OF_MEMORY) {
        throw std::bad_alloc(); // not the same as a part that is missing
    }
    if (code != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    return text;
}

Scheme schemeOf(const std::string& name)
{
    if (name == "ftp") {
        return Scheme::Ftp;
    }
    if (name == "ftps") {
        return Scheme::Ftps;
    }
    if (name != "sftp") {
        throw refusal(CURLE_UNSUPPORTED_PROTOCOL,
                      "remotePath begins with " + shown(name, {}) + ":, a session knows ftp:, ftps: and sftp:");
    }
    return Scheme::Sftp;
}

std::uint16_t portOf(const SFtpRequest& request, const Url& url, Scheme scheme)
{
    if (request.port > kHighestPort) {
        throw refusal(CURLE_URL_MALFORMAT, "port is " + std::to_string(request.port) + ", above 65535");
    }
    const std::string inUrl = partOf(url, CURLUPART_PORT);
    std::uint16_t port = scheme == Scheme::Ftp ? 21 : scheme == Scheme::Ftps ? 990 : 22;
    std::from_chars(inUrl.data(), inUrl.data() + inUrl.size(), port);
    return request.port != 0 ? static_cast<std::uint16_t>(request.port) : port;
}

// An encoded slash counts as one; libcurl decodes it, too.
std::string wholePath(const Url& url)
{
    const std::string path = partOf(url, CURLUPART_PATH);
    std::string whole = path.empty() ? "/" : "";
    for (std::string::size_type i = 0; i < path.size(); ++i) {
        const std::string code = path.substr(i, 3);
        if (code == "%2F" || code == "%2f") {
            whole += i == 1 ? kCodedSlash : "/";
            i += 2;
        } else {
            whole += path[i];
        }
    }
    return whole;
}

// In "ftp:///a/b" libcurl would take the first directory for the host.
void requireHost(const std::string& url)
{
    const std::string::size_type slashes = url.find("://");
    if (slashes != std::string::npos && url.find_first_not_of('/', slashes + 3) != slashes + 3) {
        throw refusal(CURLE_URL_MALFORMAT, "remotePath names no host");
    }
}

// As in a URL: an IPv6 address in brackets, with its zone.
std::string hostOf(const Url& url)
{
    const std::string host = partOf(url, CURLUPART_HOST);
    const std::string zone = partOf(url, CURLUPART_ZONEID);
    return zone.empty() ? host : host.substr(0, host.size() - 1) + "%25" + zone + "]";
}

void requireNoControlByte(const char* field, const std::string& text)
{
    if (holdsControlByte(text)) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, std::string(field) + " holds a control byte");
    }
}

} // namespace

// libcurl has no room for a command of 64 KiB, and says that memory is out. Of a request above 32700 bytes, such as one
// to rename, which holds two names with their paths, libssh2 sends a part alone, and the server takes the next request
// for its rest.
void requireName(const char* field, const std::string& name)
{
    requireNoControlByte(field, name);
    constexpr std::size_t kLongest = 8000;
    if (name.size() > kLongest) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT,
                      std::string(field) + " is longer than " + std::to_string(kLongest) + " bytes");
    }
}

Target::Target(const SFtpRequest& request)
{
    requireNoControlByte("remotePath", request.remotePath);
    const Url url = parsed(request.remotePath);
    m_scheme = schemeOf(partOf(url, CURLUPART_SCHEME));
    requireHost(request.remotePath);
    m_server =
        partOf(url, CURLUPART_SCHEME) + "://" + hostOf(url) + ":" + std::to_string(portOf(request, url, m_scheme));
    m_path = wholePath(url);
    requireName("remotePath", percentDecoded(m_path));
}

void Target::requireFile() const
{
    if (isDirectory()) {
        throw refusal(CURLE_URL_MALFORMAT, "remotePath ends in \"/\" and so names a directory");
    }
}

std::string Target::directoryUrl() const { return url() + (isDirectory() ? "" : "/"); }

// The index of the first name.
std::string::size_type Target::top() const
{
    if (isSsh() && m_path.compare(0, 3, "/~/") == 0) {
        return 3;
    }
    return m_path.compare(1, 3, kCodedSlash) == 0 ? 4 : 1;
}

std::string::size_type Target::lastName() const
{
    return std::max(m_path.rfind('/', m_path.find_last_not_of('/')) + 1, top());
}

std::string Target::encodedName() const
{
    const std::string name = m_path.substr(lastName());
    return name.substr(0, name.find_last_not_of('/') + 1);
}

std::string Target::name() const { return percentDecoded(encodedName()); }

std::string Target::pathOf(const std::string& directory, const std::string& name) const
{
    if (!isSsh()) {
        return name;
    }
    // "/~/" stands for the login's directory, to which a path without a leading "/" is relative.
    const std::string decoded = percentDecoded(directory);
    return (decoded.compare(0, 3, "/~/") == 0 ? decoded.substr(3) : decoded) + name;
}

std::string Target::commandPath(const std::string& name) const
{
    return pathOf(m_path + (isDirectory() ? "" : "/"), name);
}

std::string Target::commandPathInParent(const std::string& name) const
{
    return pathOf(m_path.substr(0, lastName()), name);
}

void checkTexts(const SFtpRequest& request)
{
    requireNoControlByte("userName", request.userName);
    requireNoControlByte("password", request.password);
    requireName("remoteFileName", request.remoteFileName);
    // The system would take what is in front of it for the name: of another file.
    if (request.localPath.find('\0') != std::string::npos) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, "localPath holds a zero byte");
    }
}

std::string percentDecoded(const std::string& text)
{
    int length = 0;
    const std::unique_ptr<char, decltype(&curl_free)> decoded(
        curl_easy_unescape(nullptr, text.c_str(), static_cast<int>(text.size()), &length), curl_free);
    if (!decoded) {
        throw std::bad_alloc();
    }
    return std::string(decoded.get(), static_cast<std::size_t>(length));
}

} // namespace session
