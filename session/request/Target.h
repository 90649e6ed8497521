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

/// What a request points to: the parts of its URL, checked, without any login in it.
///
/// Paths are kept as in the URL, with percent codes. They are relative to the login's directory for FTP, and to the
/// root for SFTP.
class Target
{
public:
    /// Throws `Failure`, with a text that names the field, before anything is sent.
    explicit Target(const SFtpRequest& request);

    Scheme scheme() const { return m_scheme; }
    bool isSsh() const { return m_scheme == Scheme::Sftp; }
    /// Scheme, host and port, as in the URL, with the zone of an IPv6 address.
    const std::string& server() const { return m_server; }

    /// The whole URL.
    std::string url() const { return m_server + m_path; }
    /// The same, ending in "/".
    std::string directoryUrl() const;
    /// The URL of the parent directory.
    std::string parentUrl() const { return m_server + m_path.substr(0, lastName()); }

    /// The path's last name, decoded; empty for the top directory.
    std::string name() const;
    /// The same, as in the URL.
    std::string encodedName() const;
    /// Whether the URL names a directory, that is, ends in "/".
    bool isDirectory() const { return m_path.back() == '/' || m_path.size() == top(); }

    /// Throws `Failure` if the URL names a directory.
    void requireFile() const;

    /// `name`, an entry of the directory `url`, as a command needs it: alone for FTP, where that is the current
    /// directory; with its path for SFTP.
    std::string commandPath(const std::string& name) const;
    /// The same for an entry of the parent directory.
    std::string commandPathInParent(const std::string& name) const;

private:
    std::string::size_type top() const;
    std::string::size_type lastName() const;
    std::string pathOf(const std::string& directory, const std::string& name) const;

    Scheme m_scheme = Scheme::Ftp;
    std::string m_server; // "ftp://host:port"
    std::string m_path;   // begins with "/", or with "/%2F" for FTP's root, which is not the login's directory
};

/// Throws `Failure` for a name that a command cannot hold: one with a control byte, which could begin another command,
/// or one that is too long.
void requireName(const char* field, const std::string& name);

/// Throws `Failure` for a control byte in the user, the password or a name: it could begin another command. In the
/// local path only for a zero byte: it would end the name.
void checkTexts(const SFtpRequest& request);

/// `text` with each %XX replaced by its byte.
std::string percentDecoded(const std::string& text);

} // namespace session

#endif
