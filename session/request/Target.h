#ifndef SFTPCLIENT_SESSION_TARGET_H
#define SFTPCLIENT_SESSION_TARGET_H

#include <SFtpRequest.h>

#include <cstdint>
#include <string>

namespace session {

enum class Scheme
{
    Ftp,
    Ftps,
    Sftp
};

/// What a request points at: the parts of its URL, checked, without a login that may stand in it.
///
/// A path is kept as it stands in the URL, percent codes included. For FTP it counts from the login's directory, for
/// SFTP from the root.
class Target
{
public:
    /// Throws `Failure`, whose text names the field: nothing has been sent then.
    explicit Target(const SFtpRequest& request);

    Scheme scheme() const { return m_scheme; }
    bool isSsh() const { return m_scheme == Scheme::Sftp; }
    const std::string& host() const { return m_host; } ///< an IPv6 address without its brackets
    std::uint16_t port() const { return m_port; }

    /// The whole URL.
    std::string url() const { return m_server + m_path; }
    /// The same with a "/" at its end.
    std::string directoryUrl() const;
    /// The URL of the directory that the last name of the path is in.
    std::string parentUrl() const { return m_server + m_path.substr(0, lastName()); }

    /// The path's last name, decoded; empty for the top directory.
    std::string name() const;
    /// The same as it stands in the URL.
    std::string encodedName() const;
    /// Whether the URL is a directory's: it ends in "/".
    bool isDirectory() const { return m_path.back() == '/' || m_path.size() == top(); }

    /// Throws `Failure` where the URL is a directory's.
    void requireFile() const;

    /// How a command names `name`, an entry of the directory of `url`: for FTP by itself, because the server is in that
    /// directory then; for SFTP with its path.
    std::string commandPath(const std::string& name) const;
    /// The same for an entry of the parent directory.
    std::string commandPathInParent(const std::string& name) const;

private:
    std::string::size_type top() const;
    std::string::size_type lastName() const;
    std::string pathOf(const std::string& directory, const std::string& name) const;

    Scheme m_scheme = Scheme::Ftp;
    std::string m_host;
    std::uint16_t m_port = 0;
    std::string m_server; // "ftp://host:port"
    std::string m_path;   // begins with "/", or for FTP's root, which is not where a login leads, with "/%2F"
};

/// Throws `Failure` where user, password or a name of the request could reach the server as something else.
void checkTexts(const SFtpRequest& request);

/// `text` with the byte in place of each %XX.
std::string percentDecoded(const std::string& text);

} // namespace session

#endif
