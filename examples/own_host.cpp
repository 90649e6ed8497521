// A host that supplies the four services itself, with a minimum of code: it downloads one file. It calls libcurl, too,
// and so needs the flags of both:
//
//     g++ -std=c++17 own_host.cpp $(pkg-config --cflags --libs sftpclient libcurl) -o own-host
//     HOST_PASSWORD=... own-host ca.pem ftps://backup.example.com:990/weekly/sunday.bak sunday.bak

#include <ConfigReader.h>
#include <LogProxy.h>
#include <SFtpClient.h>
#include <SecuritySS.h>

#include <curl/curl.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>

// The log: one call for each record, so that those of many threads do not mix. A real one escapes control characters.
LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy()
{
    try {
        const std::string text = str().substr(1); // each record begins with a 0
        std::clog << m_module + " #" + std::to_string(m_requestId) + " level " + std::to_string(m_level) + " " +
                         m_function + " " + text + "\n";
    } catch (const std::exception&) {
        return; // a destructor must not throw
    }
}

// The request identifiers: one for each thread.
ThreadRequestId TSP_RequestID;

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 0;
    return identifier;
}

// The configuration: there is none, so each value is the default.
int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool defaultValue)
{
    return defaultValue ? 1 : 0;
}

// The security service: settings for every TLS connection of this host.
SecuritySS_RC SecuritySS::enrichSSL(void* curl, std::string& /*cert*/)
{
    const CURLcode set = curl_easy_setopt(curl, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    return set == CURLE_OK ? SECURITYSS_SUCCESS : SECURITYSS_FAILURE;
}

int main(int argc, char** argv)
{
    const char* const password = std::getenv("HOST_PASSWORD");
    if (argc != 4 || password == nullptr) {
        std::cerr << "usage: HOST_PASSWORD=... own-host CA-FILE URL LOCAL-FILE\n";
        return 2;
    }
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) { // before the first thread that uses the library
        std::cerr << "own-host: libcurl cannot be initialised.\n";
        return 1;
    }
    std::ifstream ca(argv[1], std::ios::binary);
    SFtpRequest request;
    request.caCert.assign(std::istreambuf_iterator<char>(ca), {});
    request.remotePath = argv[2];
    request.localPath = argv[3];
    request.userName = "backup";
    request.password = password;

    TSP_RequestID.get() = 1;
    std::string errorText;
    const int result = SFtpClient().DownLoadSFtpFile(request, errorText);
    std::cout << "result " << result << " " << errorText << std::endl;
    curl_global_cleanup();
    return result == 0 ? 0 : 1;
}
