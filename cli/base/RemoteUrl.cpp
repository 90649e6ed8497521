#include "base/RemoteUrl.h"

#include "base/Checks.h"
#include "base/PercentCode.h"
#include "base/UsageError.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace {

constexpr uint32_t kHighestPort = 65535;

std::string lowerCase(std::string text)
{
    for (char& character : text) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return text;
}

uint32_t portOfScheme(const std::string& scheme)
{
    if (scheme == "ftps") {
        return 990;
    }
    return scheme == "sftp" ? 22 : 21;
}

uint32_t toPort(const std::string& digits)
{
    uint32_t port = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result read = std::from_chars(digits.data(), end, port);
    if (read.ec != std::errc() || read.ptr != end || port == 0 || port > kHighestPort) {
        throw UsageError("The port in the URL must be a number from 1 to 65535.");
    }
    return port;
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
    m_scheme = lowerCase(text.substr(0, schemeEnd));
    if (schemeEnd == std::string::npos || (m_scheme != "ftp" && m_scheme != "ftps" && m_scheme != "sftp")) {
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
    splitAuthority(text.substr(std::max(authority, host), path - std::max(authority, host)));
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

void RemoteUrl::splitAuthority(const std::string& authority)
{
    const std::string::size_type bracket = authority.rfind(']');
    const std::string::size_type colon = authority.find(':', bracket == std::string::npos ? 0 : bracket);
    m_host = authority.substr(0, colon);
    const bool bracketed = !m_host.empty() && m_host.front() == '[' && m_host.back() == ']';
    if (m_host.empty() || (bracket != std::string::npos && !bracketed)) {
        throw UsageError("URL must name a host after ://, an IPv6 address in brackets: ftp://[::1]/.");
    }
    if (colon == std::string::npos) {
        return;
    }
    if (authority.find(':', colon + 1) != std::string::npos) {
        throw UsageError("URL must hold an IPv6 address in brackets: ftp://[::1]/.");
    }
    m_port = toPort(authority.substr(colon + 1));
}

uint32_t RemoteUrl::port(uint32_t chosen) const
{
    if (chosen != 0) {
        return chosen;
    }
    return m_port != 0 ? m_port : portOfScheme(m_scheme);
}

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
    const bool isPlain = !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
                         (allIsName || path.find_first_of("?#") == std::string::npos);
    if (!isPlain) {
        throw UsageError("The URL's last name cannot name a local file: name the file to write after the URL.");
    }
    return name;
}
