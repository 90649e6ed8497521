#include "harness/Served.h"

#include <base/ProxyEnvironment.h>

#include <curl/curl.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>

namespace {

constexpr const char* kVariables[] = {"ftp_proxy", "FTP_PROXY", "ftps_proxy", "FTPS_PROXY", "sftp_proxy", "SFTP_PROXY",
                                      "all_proxy", "ALL_PROXY", "http_proxy", "HTTP_PROXY", "no_proxy",   "NO_PROXY"};

constexpr in_port_t kProxyPort = 99;
constexpr char kProxy[] = "http://127.0.0.1:99";

curl_socket_t notePort(void* port, curlsocktype /*purpose*/, curl_sockaddr* address)
{
    sockaddr_in internet = {};
    std::memcpy(&internet, &address->addr, sizeof internet);
    *static_cast<in_port_t*>(port) = ntohs(internet.sin_port);
    return CURL_SOCKET_BAD;
}

/// What libcurl itself does for the URL in this process's environment.
bool libcurlTakesProxy(const std::string& url)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
    in_port_t port = 0;
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_OPENSOCKETFUNCTION, notePort);
    curl_easy_setopt(handle.get(), CURLOPT_OPENSOCKETDATA, &port);
    curl_easy_perform(handle.get());
    return port == kProxyPort;
}

class ProxyVariables : public testing::Test
{
protected:
    ProxyVariables() { clear(); }
    ~ProxyVariables() override { clear(); }

    static void clear()
    {
        for (const char* const name : kVariables) {
            unsetenv(name);
        }
    }
};

} // namespace

TEST_F(ProxyVariables, AreThoseThatLibcurlUses)
{
    for (const std::string name : kVariables) {
        SCOPED_TRACE(name);
        for (const std::string scheme : {"ftp", "ftps", "sftp"}) {
            SCOPED_TRACE(name + " of " + scheme);
            const std::string url = scheme + "://127.0.0.1:7/";
            setenv(name.c_str(), kProxy, 1);
            const bool taken = libcurlTakesProxy(url);
            const ProxyEnvironment proxies;
            EXPECT_EQ(taken ? name : "", proxies.variableFor(url)) << url;
            EXPECT_FALSE(libcurlTakesProxy(url)) << name << " is still there";
            clear();
        }
    }
    setenv("ftp_proxy", kProxy, 1);
    EXPECT_TRUE(libcurlTakesProxy("ftp://127.0.0.1:7/")) << "this test would see nothing";
}

TEST_F(ProxyVariables, HaveAPrecedence)
{
    const std::vector<std::string> order{"ftps_proxy", "FTPS_PROXY", "all_proxy", "ALL_PROXY"};
    for (std::size_t first = 0; first < order.size(); ++first) {
        for (std::size_t i = 0; i < order.size(); ++i) {
            // libcurl treats an empty variable as unset.
            setenv(order[i].c_str(), i < first ? "" : kProxy, 1);
        }
        EXPECT_EQ(order[first], ProxyEnvironment().variableFor("ftps://host/"));
    }
    EXPECT_EQ("", ProxyEnvironment().variableFor("ftps://host/"));
}

TEST_F(ProxyVariables, AreOverriddenByExceptions)
{
    for (const char* const name : {"no_proxy", "NO_PROXY"}) {
        SCOPED_TRACE(name);
        for (const std::string exception : {"", "*", "127.0.0.1", "127.0.0.2", "localhost, 127.0.0.1"}) {
            setenv("ALL_PROXY", kProxy, 1);
            setenv(name, exception.c_str(), 1);
            const bool taken = libcurlTakesProxy("ftp://127.0.0.1:7/");
            EXPECT_EQ(taken ? "ALL_PROXY" : "", ProxyEnvironment().variableFor("ftp://127.0.0.1:7/")) << exception;
            clear();
        }
    }
    setenv("ALL_PROXY", kProxy, 1);
    setenv("no_proxy", "backup.example.com", 1);
    const ProxyEnvironment proxies;
    EXPECT_EQ("", proxies.variableFor("ftps://backup.example.com:990/weekly/"));
    EXPECT_EQ("ALL_PROXY", proxies.variableFor("ftps://[::1]/weekly/"));
    EXPECT_EQ("ALL_PROXY", proxies.variableFor("ftps://other.example.com/weekly/"));
}

TEST_F(Served, IgnoresProxiesInTheEnvironment)
{
    writeFile(local("file"), "contents");
    testserver::ServerConfig noProxy;
    noProxy.root = served("");
    noProxy.tls = testserver::TlsMode::Plain;
    testserver::FtpServer proxy(noProxy);
    Variables variables;
    for (const char* const name : kVariables) {
        variables.emplace_back(name, "http://127.0.0.1:" + std::to_string(proxy.port()));
    }
    variables.resize(variables.size() - 2); // the exceptions
    for (const testserver::TlsMode mode : {testserver::TlsMode::Explicit, testserver::TlsMode::Implicit}) {
        config.tls = mode;
        serve();
        for (const Words& form : std::vector<Words>{{"test", url()},
                                                    {"put", "file", url()},
                                                    {"ls", url()},
                                                    {"get", url("/file"), "got"},
                                                    {"mv", url(), "file", "moved"},
                                                    {"rm", url(), "moved"}}) {
            EXPECT_TRUE(exited(0, run(form, variables))) << form[0];
        }
    }
    EXPECT_EQ(0U, proxy.transcripts().size());
}
