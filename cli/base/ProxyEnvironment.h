#ifndef SFTPCLIENT_CLI_BASE_PROXYENVIRONMENT_H
#define SFTPCLIENT_CLI_BASE_PROXYENVIRONMENT_H

#include <map>
#include <string>

/// Takes the variables that name a proxy out of the process's environment: libcurl obeys them wherever a program does
/// not say otherwise, as the library does not, and an FTP proxy gets the login in the clear. What they said is kept.
class ProxyEnvironment
{
public:
    /// REQUIRES: no other thread, and no transfer yet.
    ProxyEnvironment();

    /// The variable by which a host with that environment would go through a proxy to `url`, which has the scheme ftp,
    /// ftps or sftp and no login, such as "ftp_proxy"; empty where it would not. libcurl itself decides, no_proxy
    /// included; nothing is connected to, or resolved.
    std::string variableFor(const std::string& url) const;

    /// Whether that variable names an HTTP proxy, which for an ftp: URL makes the connection in the client's place and
    /// is told the login. REQUIRES: `variableFor` has named it.
    bool isHttp(const std::string& variable) const;

private:
    std::map<std::string, std::string> m_variables;
};

#endif
