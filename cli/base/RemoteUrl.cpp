#include "base/RemoteUrl.h"

#include "base/Checks.h"
#include "base/PercentCode.h"
#include "base/UsageError.h"

#include <boost/algorithm/string/predicate.hpp>
#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <new>

namespace {

using Parts = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

bool isKnownScheme(const std::string& scheme)
{
    return boost::iequals(scheme, "ftp") || boost::iequals(scheme, "ftps") || boost::iequals(scheme, "sftp");
}

[[noreturn]] void refuseHost()
{
    throw UsageError("URL must name a host after ://, an IPv6 address in brackets: ftp://[::1]/.");
}

[[noreturn]] void refusePort()
{
    throw UsageError(
        "The port in the URL must be a number from 1 to 65535, and an IPv6 address must stand in brackets: "
        "ftp://[::1]/.");
}

Parts parsed(const std::string& url)
{
    Parts parts(curl_url(), curl_url_cleanup);
    if (!parts) {
        throw std::bad_alloc();
    }
    // libcurl knows sftp: as a scheme only where it was built with SSH.
    const CURLUcode code =
        curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS);
    if (code == CURLUE_BAD_PORT_NUMBER) {
        refusePort();
    }
    if (code != CURLUE_OK) {
        refuseHost();
    }
    return parts;
}

std::string partOf(const Parts& parts, CURLUPart part, unsigned flags = 0)
{
    char* text = nullptr;
    const CURLUcode code = curl_url_get(parts.get(), part, &text, flags);
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
    return code == CURLUE_OK ? text : std::string();
}

uint32_t toNumber(const std::string& digits)
{
    uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

bool endsInSlash(const std::string& path) { return !path.empty() && path.back() == '/'; }

} // namespace

RemoteUrl::RemoteUrl(const std::string& text) : m_text(text)
{
    refuseControlBytes("URL", text);
    if (text.find(' ') != std::string::npos) {
        throw UsageError("URL must not hold a blank: write %20.");
    }
    const std::string::size_type schemeEnd = text.find("://");
    if (schemeEnd == std::string::npos || !isKnownScheme(text.substr(0, schemeEnd))) {
        throw UsageError("URL must begin with ftp://, ftps:// or sftp://.");
    }
    const std::string::size_type authority = schemeEnd + 3;
    const std::string::size_type path = std::min(text.find_first_of("/?#", authority), text.size());
    m_path = text.substr(path);
    const std::string::size_type host = text.find_last_of('@', path - 1) + 1;
    if (host > authority) {
        takeUser(text.substr(authority, host - 1 - authority));
        m_text.erase(authority, host - authority);
    }
    if (path == std::max(authority, host)) {
        refuseHost(); // libcurl would take the next name for it
    }
    const Parts parts = parsed(m_text);
    m_scheme = partOf(parts, CURLUPART_SCHEME);
    m_host = partOf(parts, CURLUPART_HOST);
    m_port = toNumber(partOf(parts, CURLUPART_PORT));
    m_usualPort = toNumber(partOf(parts, CURLUPART_PORT, CURLU_DEFAULT_PORT));
    // libcurl takes them for no port.
    if (m_usualPort == 0 || text[path - 1] == ':') {
        refusePort();
    }
    // libcurl would refuse most of them, too, but only when it has logged in.
    refuseControlBytes("The path in the URL", percentDecoded(m_path));
}

void RemoteUrl::takeUser(const std::string& login)
{
    // Whoever can list processes would read the password.
    if (login.find(':') != std::string::npos) {
        throw UsageError("URL must not hold a password: leave it out and give it with --password-file FILE, with "
                         "--password-stdin, or in the environment variable SFTPCLIENT_PASSWORD.");
    }
    m_user = percentDecoded(login);
    if (m_user.empty()) {
        throw UsageError("URL must name a user before the @: write ftp://user@host/, or leave the @ out.");
    }
    refuseControlBytes("The user in the URL", m_user);
}

uint32_t RemoteUrl::port(uint32_t chosen) const { return chosen != 0 ? chosen : m_usualPort; }

std::string RemoteUrl::host() const { return m_host.front() == '[' ? m_host.substr(1, m_host.size() - 2) : m_host; }

const std::string& RemoteUrl::forListing() const
{
    if (!m_path.empty() && !endsInSlash(m_path)) {
        throw UsageError("The URL of a directory ends in \"/\": write " + m_text + "/.");
    }
    return m_text;
}

std::string RemoteUrl::forDirectoryCommand(uint32_t chosen) const
{
    // The library takes the directory as it stands after the URL's last ":"; libcurl visits the decoded path.
    if (m_path.find_first_of(":%?#") != std::string::npos) {
        throw UsageError("The directory in the URL of mv and rm must not hold \":\", \"%\", \"?\" or \"#\": visit one "
                         "above it, and name the rest in OLD, NEW or NAME.");
    }
    const std::string scheme = m_text.substr(0, m_scheme.size());
    const uint32_t shown = m_port != 0 ? m_port : port(chosen);
    const std::string directory = endsInSlash(m_path) ? m_path : m_path + "/";
    return scheme + "://" + m_host + ":" + std::to_string(shown) + directory;
}

std::string RemoteUrl::forUpload(const std::string& localPath) const
{
    if (!m_path.empty() && !endsInSlash(m_path)) {
        return m_text;
    }
    if (localPath == "-") {
        throw UsageError("URL must name the file to write: standard input has no name.");
    }
    const std::string name = localPath.substr(localPath.rfind('/') + 1);
    refuseControlBytes("The name of LOCAL", name);
    return m_text + (m_path.empty() ? "/" : "") + percentEncoded(name);
}

std::string RemoteUrl::fileName(bool allIsName) const
{
    // libcurl takes ";type=a" at the end for the kind of transfer.
    const std::string path = allIsName ? m_path : m_path.substr(0, m_path.rfind(";type="));
    std::string name = percentDecoded(path.substr(path.rfind('/') + 1));
    if (!isPlainName(name) || (!allIsName && path.find_first_of("?#") != std::string::npos)) {
        throw UsageError("The URL's last name cannot name a local file: name the file to write after the URL.");
    }
    return name;
}
