#include "base/ProxyEnvironment.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <curl/curl.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <memory>

namespace {

// All that libcurl looks at for these schemes; http_proxy is none of them.
constexpr const char* kVariables[] = {"ftp_proxy",  "FTP_PROXY", "ftps_proxy", "FTPS_PROXY", "sftp_proxy",
                                      "SFTP_PROXY", "all_proxy", "ALL_PROXY",  "no_proxy",   "NO_PROXY"};

constexpr in_port_t kProxyPort = 1;
constexpr long kServerPort = 2;
constexpr char kProxy[] = "http://127.0.0.1:1";
constexpr char kAnyHost[] = "*:2:127.0.0.1";

// libcurl 8.14 takes sftp_proxy only in capitals.
bool isIgnored(const std::string& name)
{
    return name == "sftp_proxy" && curl_version_info(CURLVERSION_NOW)->version_num >= 0x080e00;
}

curl_socket_t notePort(void* port, curlsocktype /*purpose*/, curl_sockaddr* address) noexcept
{
    sockaddr_in internet = {};
    std::copy_n(reinterpret_cast<const char*>(&address->addr), sizeof internet, reinterpret_cast<char*>(&internet));
    *static_cast<in_port_t*>(port) = ntohs(internet.sin_port);
    return CURL_SOCKET_BAD;
}

// Whether libcurl would use a proxy for the URL although there are these exceptions.
bool goesThroughProxy(const std::string& url, const std::string& exceptions)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> hosts(curl_slist_append(nullptr, kAnyHost),
                                                                            curl_slist_free_all);
    in_port_t port = 0;
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PORT, kServerPort);
    curl_easy_setopt(handle.get(), CURLOPT_RESOLVE, hosts.get());
    curl_easy_setopt(handle.get(), CURLOPT_PROXY, kProxy);
    curl_easy_setopt(handle.get(), CURLOPT_NOPROXY, exceptions.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_OPENSOCKETFUNCTION, notePort);
    curl_easy_setopt(handle.get(), CURLOPT_OPENSOCKETDATA, &port);
    curl_easy_perform(handle.get());
    return port == kProxyPort;
}

} // namespace

ProxyEnvironment::ProxyEnvironment()
{
    for (const char* const name : kVariables) {
        const char* const value = std::getenv(name);
        // libcurl counts an empty one as none.
        if (value != nullptr && *value != '\0') {
            m_variables[name] = value;
        }
        unsetenv(name);
    }
}

std::string ProxyEnvironment::variableFor(const std::string& url) const
{
    const auto first = [this](const std::initializer_list<std::string> names) {
        const auto* const found = std::find_if(names.begin(), names.end(), [this](const std::string& name) {
            return m_variables.count(name) > 0 && !isIgnored(name);
        });
        return found == names.end() ? std::string() : *found;
    };
    const std::string ofScheme = url.substr(0, url.find(':')) + "_proxy";
    const std::string proxy = first({ofScheme, boost::to_upper_copy(ofScheme), "all_proxy", "ALL_PROXY"});
    const std::string exceptions = first({"no_proxy", "NO_PROXY"});
    const bool isTaken = !proxy.empty() && goesThroughProxy(url, exceptions.empty() ? "" : m_variables.at(exceptions));
    return isTaken ? proxy : std::string();
}

bool ProxyEnvironment::isHttp(const std::string& variable) const
{
    return !boost::istarts_with(m_variables.at(variable), "socks");
}
