#ifndef SERVERTEST_HARNESS_CURLCLIENT_H
#define SERVERTEST_HARNESS_CURLCLIENT_H

#include "harness/ServerTest.h"

#include <curl/curl.h>

#include <memory>
#include <string>

/// One libcurl handle aimed at a server: what TLS it uses follows from the server's configuration.
class CurlClient
{
public:
    CurlClient(const testserver::ServerConfig& config, std::uint16_t port, const std::string& caPem);

    CURLcode download(const std::string& path);
    CURLcode list(const std::string& path);
    CURLcode upload(const std::string& path, std::string content);
    /// Asks for the size alone; `size` has it then.
    CURLcode askSize(const std::string& path);
    /// Lists the folder and says the command afterwards.
    CURLcode say(const std::string& command);

    /// The handle, for options of a case's own.
    CURL* handle() { return m_handle.get(); }

    std::string body;
    curl_off_t size = -1;

private:
    struct Cleanup
    {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    static std::size_t take(char* bytes, std::size_t one, std::size_t count, void* client);
    static std::size_t give(char* bytes, std::size_t one, std::size_t count, void* client);
    CURLcode perform(const std::string& path);

    std::unique_ptr<CURL, Cleanup> m_handle;
    std::string m_base;
    std::string m_unsent;
};

/// A server, and clients of it.
class CurlTest : public ServerTest
{
protected:
    CurlClient client() { return CurlClient(config, server->port(), authority.certificatePem()); }
};

/// Bytes without a pattern that a lost or doubled block could hide in.
std::string manyBytes(std::size_t count);

#endif
