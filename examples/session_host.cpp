// Runs the six operations of a session once, over one connection.
//
//     g++ -std=c++17 session_host.cpp $(pkg-config --cflags --libs sftpclient-host sftpclient-session) -o session-host
//     HOST_PASSWORD=... session-host ca.pem ftp://backup.example.com/weekly/ sunday.bak fetched.bak

#include <CurlProcess.h>
#include <SFtpSession.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

class Steps
{
public:
    /// `server`: the login, and the URL of a directory.
    explicit Steps(SFtpRequest server) : m_server(std::move(server)) {}

    void testConnection() { report("test", m_session.TestSConnect(m_server, m_errorText)); }

    void upload(const std::string& localPath, const std::string& name)
    {
        report("upload", m_session.UploadFileToSFtpServer(requestFor(name, localPath), m_errorText));
    }

    void list()
    {
        std::vector<RemoteEntry> entries;
        report("list", m_session.ListEntries(m_server, entries, m_errorText));
        for (const RemoteEntry& entry : entries) {
            std::cout << "  " << entry.name << ", " << entry.size << " bytes\n";
        }
    }

    void rename(const std::string& name, const std::string& newName)
    {
        SFtpRequest request = m_server;
        request.remoteFileName = name;
        request.localPath = newName;
        report("rename", m_session.ReNameSFtpFile(request, m_errorText));
    }

    void download(const std::string& name, const std::string& localPath)
    {
        report("download", m_session.DownLoadSFtpFile(requestFor(name, localPath), m_errorText));
    }

    void remove(const std::string& name)
    {
        SFtpRequest request = m_server;
        request.remoteFileName = name;
        report("delete", m_session.DelSFtpFile(request, m_errorText));
    }

private:
    SFtpRequest requestFor(const std::string& name, const std::string& localPath) const
    {
        SFtpRequest request = m_server;
        request.remotePath += name;
        request.localPath = localPath;
        return request;
    }

    void report(const std::string& operation, int result) const
    {
        if (result != 0) {
            throw std::runtime_error(operation + ": " + std::to_string(result) + " " + m_errorText);
        }
        std::cout << operation << ": 0" << std::endl;
    }

    SFtpRequest m_server;
    SFtpSession m_session;
    std::string m_errorText;
};

} // namespace

int main(int argc, char** argv)
try {
    const char* const password = std::getenv("HOST_PASSWORD");
    if (argc != 5 || password == nullptr) {
        std::cerr << "usage: HOST_PASSWORD=... session-host CA-FILE DIRECTORY-URL FILE-TO-SEND FILE-TO-WRITE\n";
        return 2;
    }
    const CurlProcess curl; // before the first thread that uses the library, until after the last

    std::ifstream ca(argv[1], std::ios::binary);
    if (!ca) { // without a CA, a session would trust the system's
        throw std::runtime_error(std::string(argv[1]) + " cannot be read.");
    }
    SFtpRequest server;
    server.caCert.assign(std::istreambuf_iterator<char>(ca), {});
    server.remotePath = argv[2];
    server.userName = "backup";
    server.password = password;

    Steps steps(server);
    steps.testConnection();
    steps.upload(argv[3], "sunday.bak");
    steps.list();
    steps.rename("sunday.bak", "monday.bak");
    steps.download("monday.bak", argv[4]);
    steps.remove("monday.bak");
    return 0;
} catch (const std::exception& error) {
    std::cerr << "session-host: " << error.what() << "\n";
    return 1;
}
