#ifndef SERVERTEST_CURLCLIENT_H
#define SERVERTEST_CURLCLIENT_H

#include "support/Codes.h"

#include <FtpServer.h>

#include <curl/curl.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

/// For the failures of tests: codes by their names.
inline void PrintTo(CURLcode code, std::ostream* stream) { *stream << nameOf(code); }

/// One libcurl handle aimed at a server: what TLS it uses follows from the server's configuration.
class CurlClient
{
public:
    CurlClient(const testserver::ServerConfig& config, std::uint16_t port, const std::string& caPem);

    /// A file, or the listing of a folder; `body` has it then.
    CURLcode download(const std::string& path);
    CURLcode upload(const std::string& path, std::string content);

    /// The handle, for options of a single case.
    CURL* handle() { return m_handle.get(); }

    std::string body;

private:
    struct Cleanup
    {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    static std::size_t take(char* bytes, std::size_t one, std::size_t count, void* client);
    static std::size_t give(char* bytes, std::size_t one, std::size_t count, void* client);

    std::unique_ptr<CURL, Cleanup> m_handle;
    std::string m_base;
    std::string m_unsent;
};

#endif
