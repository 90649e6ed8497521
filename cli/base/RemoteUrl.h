#ifndef SFTPCLIENT_CLI_BASE_REMOTEURL_H
#define SFTPCLIENT_CLI_BASE_REMOTEURL_H

#include <cstdint>
#include <string>

/// A URL as the user gave it: ftp, ftps or sftp, read by libcurl. A user name in it is kept apart, a password is
/// refused.
class RemoteUrl
{
public:
    /// None yet.
    RemoteUrl() = default;

    /// Throws `UsageError`, with a text that says what to write instead.
    explicit RemoteUrl(const std::string& text);

    /// The URL, unchanged but for the user name, which is left out.
    const std::string& text() const { return m_text; }

    /// The user name in the URL, decoded; empty where it has none.
    const std::string& user() const { return m_user; }

    /// The host, an IPv6 address without its brackets.
    std::string host() const;

    /// "ftp", "ftps" or "sftp".
    const std::string& scheme() const { return m_scheme; }

    /// The port in the URL; 0 where it has none.
    uint32_t ownPort() const { return m_port; }

    /// The port to connect to: `chosen`, or the URL's when that is 0, or else its scheme's.
    uint32_t port(uint32_t chosen) const;

    /// Whether the connection is made with SSH, which knows no CA certificate.
    bool isSsh() const { return m_scheme == "sftp"; }

    /// The directory's URL for a listing: as it stands, for libcurl would list another directory if the "/" at its end
    /// were missing. Throws `UsageError` then.
    const std::string& forListing() const;

    /// The directory's URL for a rename or a delete: the port, `port(chosen)` unless the URL has one, and the "/" at
    /// its end are added where they are missing, because the library finds the directory by them. Throws `UsageError`
    /// when the path holds something that would make the library find another directory.
    std::string forDirectoryCommand(uint32_t chosen) const;

    /// The file's URL for an upload of `localPath`: of the file of the same name where this is a directory's.
    std::string forUpload(const std::string& localPath) const;

    /// The last name of the path, decoded, for a local file. What libcurl makes of "?", "#" and ";type=" counts only
    /// where that is not the name's, as to a session all of it is. Throws `UsageError` where that is no plain name.
    std::string fileName(bool allIsName) const;

private:
    void takeUser(const std::string& login);

    std::string m_text;
    std::string m_user;
    std::string m_scheme;
    std::string m_host;       // an IPv6 address with its brackets
    uint32_t m_port = 0;      // 0: the URL names none
    uint32_t m_usualPort = 0; // that, or the scheme's
    std::string m_path;
};

#endif
