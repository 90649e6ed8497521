#ifndef SERVERS_SERVER_H
#define SERVERS_SERVER_H

#include "support/Process.h"

#include <string>
#include <vector>

/// One value for each of the six operations.
template <typename Value>
struct Six
{
    Value test, upload, list, download, rename, remove;
};

/// What a listing names: the folder's files, or also "." and "..".
enum class Listing
{
    Files,
    FilesAndDots
};

/// Whether a data connection must continue the control connection's TLS session.
enum class DataTls
{
    None,
    AnySession,
    SameSession
};

/// A daemon in one of its configurations, and what the library's operations are to return there.
struct Server
{
    std::string id;      ///< the name of its test
    std::string title;   ///< its name in the matrix
    std::string package; ///< what must be unpacked, and the word that switches it off
    std::string scheme;  ///< of the URLs
    std::string root;    ///< the path in the URLs at which the user's files are
    Listing listing;
    DataTls dataTls;
    Six<int> expected;
    std::string remark; ///< why that is so

    /// Writes the configuration into `folder`, which holds the certificate's PEM files cert.pem and key.pem, and for
    /// SFTP the host_key. The command uses the paths of `PrivateSystem`.
    ProcessSetup (*configure)(const std::string& folder);

    bool listens = false; ///< by itself, for all connections; others are started for each
};

const std::vector<Server>& servers();

/// Those among them that speak SFTP.
const std::vector<Server>& sshServers();

/// Those that allow an address one connection at a time.
const std::vector<Server>& limitedServers();

// What `servers` is made from: one function a daemon and configuration.
ProcessSetup vsftpdExplicit(const std::string& folder);
ProcessSetup vsftpdImplicit(const std::string& folder);
ProcessSetup vsftpdTlsAtLogin(const std::string& folder);
ProcessSetup proftpdExplicit(const std::string& folder);
ProcessSetup proftpdImplicit(const std::string& folder);
ProcessSetup proftpdTlsAtLogin(const std::string& folder);
ProcessSetup proftpdClear(const std::string& folder);
ProcessSetup proftpdSftp(const std::string& folder);
ProcessSetup pureFtpdExplicit(const std::string& folder);
ProcessSetup pureFtpdTlsAtLogin(const std::string& folder);
ProcessSetup opensshSftp(const std::string& folder);
ProcessSetup vsftpdLimited(const std::string& folder);
ProcessSetup pureFtpdLimited(const std::string& folder);

// TLS at login, and data connections may begin a TLS session of their own: for clients that cannot continue one.
ProcessSetup vsftpdAnySession(const std::string& folder);
ProcessSetup proftpdAnySession(const std::string& folder);

// The same, with one TLS version alone; and from the first byte, with TLS 1.2.
ProcessSetup vsftpdTls12(const std::string& folder);
ProcessSetup vsftpdTls13(const std::string& folder);
ProcessSetup vsftpdImplicitAnySession(const std::string& folder);

#endif
