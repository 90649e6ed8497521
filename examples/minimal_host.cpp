// A host without services of its own, which uses the ready ones: it downloads one file.
//
//     g++ -std=c++17 minimal_host.cpp $(pkg-config --cflags --libs sftpclient-host) -o minimal-host
//     HOST_PASSWORD=... minimal-host settings.ini ca.pem ftps://backup.example.com:990/weekly/sunday.bak sunday.bak
//
// Let section Log of settings.ini name a file: standard error gets libcurl's trace, which contains the password.

#include <CurlProcess.h>
#include <HostConfiguration.h>
#include <HostLog.h>
#include <LogProxy.h>
#include <RequestIdScope.h>
#include <SFtpClient.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace {

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + " cannot be read.");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

void setUpServices(const std::string& iniFile)
{
    HostConfiguration& configuration = HostConfiguration::instance();
    configuration.load(iniFile);
    HostLog::instance().apply(logSettingsFrom(*configuration.values()));
}

int download(const SFtpRequest& request)
{
    const RequestIdScope requestId(1); // all records of this request carry it
    LogProxy(1, "minimal-host", TSP_RequestID.get(), __func__, __LINE__) << 0 << "fetching " << request.remotePath;
    std::string errorText;
    const int result = SFtpClient().DownLoadSFtpFile(request, errorText);
    std::cout << "result " << result << " " << errorText << std::endl;
    return result;
}

} // namespace

int main(int argc, char** argv)
try {
    const char* const password = std::getenv("HOST_PASSWORD");
    if (argc != 5 || password == nullptr) {
        std::cerr << "usage: HOST_PASSWORD=... minimal-host INI-FILE CA-FILE URL LOCAL-FILE\n";
        return 2;
    }
    setUpServices(argv[1]);
    const CurlProcess curl; // before the first thread that uses the library, until after the last

    SFtpRequest request;
    request.caCert = contentOf(argv[2]);
    request.remotePath = argv[3];
    request.localPath = argv[4];
    request.userName = "backup";
    request.password = password;
    return download(request) == 0 ? 0 : 1;
} catch (const std::exception& error) {
    std::cerr << "minimal-host: " << error.what() << "\n";
    return 1;
}
