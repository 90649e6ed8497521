#include "harness/Visitor.h"

#include "support/RandomBytes.h"

#include <LogProxy.h>

#include <array>
#include <filesystem>

namespace {

constexpr const char* kUntouched = "as it was";
// The one record that belongs to no request.
constexpr const char* kCertificate = "0 1 sftpSetCertTmp(): Establish SSL with cert";

} // namespace

Visitor::Visitor(unsigned number, const SFtpRequest& login, const Place& place)
    : m_number(number), m_login(login), m_place(place),
      m_content(randomBytes(100000 + std::size_t{1009} * number, number))
{
    for (const char* const folder : {"", "list", "rename", "remove"}) {
        std::filesystem::create_directories(m_place.served + folder);
    }
    std::filesystem::create_directories(m_place.local);
    writeFile(m_place.served + "download", m_content);
    writeFile(m_place.local + "upload", m_content);
    writeFile(m_place.served + "list/" + name("first"), "");
    writeFile(m_place.served + "list/" + name("second"), "");
    writeFile(m_place.served + "rename/" + name("old"), m_content);
    writeFile(m_place.served + "remove/" + name("doomed"), m_content);
    writeFile(m_place.served + "test", name("printed") + "\n");
}

void Visitor::perform(unsigned operation, SFtpClient& facade)
{
    using Operation = void (Visitor::*)(SFtpClient&);
    static constexpr std::array<Operation, kOperations> kAll = {&Visitor::download, &Visitor::upload, &Visitor::rename,
                                                                &Visitor::remove,   &Visitor::list,   &Visitor::test};
    m_identifier = 1000UL * (m_number + 1) + operation;
    TSP_RequestID.get() = m_identifier;
    (this->*kAll.at(operation))(facade);
}

void Visitor::download(SFtpClient& facade)
{
    SFtpRequest request = aimedAt("download");
    request.localPath = m_place.local + "download";
    std::string errorText = kUntouched;
    const int result = facade.DownLoadSFtpFile(request, errorText);
    judge("download", result, errorText,
          {record("1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =") +
               std::to_string(m_content.size()) + ", fileSizeLimit = 53687091200",
           kCertificate, record("2 CurlSFtpResponse::DownLoadSFtpFile(): DownLoadSFtpFile():end ")});
    add(problem("the file fetched", sameBytes(m_content, contentOf(request.localPath))));
}

void Visitor::upload(SFtpClient& facade)
{
    SFtpRequest request = aimedAt("upload");
    request.localPath = m_place.local + "upload";
    std::string errorText = kUntouched;
    const int result = facade.UploadFileToSFtpServer(request, errorText);
    judge("upload", result, errorText, {});
    add(problem("the file sent", sameBytes(m_content, contentOf(m_place.served + "upload"))));
}

void Visitor::rename(SFtpClient& facade)
{
    SFtpRequest request = aimedAt("rename/");
    request.remoteFileName = name("old");
    request.localPath = name("new");
    std::string errorText = kUntouched;
    const int result = facade.ReNameSFtpFile(request, errorText);
    judge("rename", result, errorText,
          {kCertificate, record("2 CurlSFtpResponse::ReNameSFtpFile(): ReNameSFtpFile():end ")});
    add(problem("the renamed file", sameBytes(m_content, contentOf(m_place.served + "rename/" + name("new")))));
    add(compare("the old name", false, std::filesystem::exists(m_place.served + "rename/" + name("old"))));
}

void Visitor::remove(SFtpClient& facade)
{
    SFtpRequest request = aimedAt("remove/");
    request.remoteFileName = name("doomed");
    std::string errorText = kUntouched;
    const int result = facade.DelSFtpFile(request, errorText);
    judge("delete", result, errorText, {kCertificate, record("2 CurlSFtpResponse::DelSFtpFile(): DelSFtpFile():end ")});
    add(compare("the deleted file", false, std::filesystem::exists(m_place.served + "remove/" + name("doomed"))));
}

void Visitor::list(SFtpClient& facade)
{
    SFtpRequest request = aimedAt("list/");
    request.localPath = m_place.local + "list";
    std::string errorText = kUntouched;
    const int result = facade.Listsftpdir(request, errorText);
    judge("list", result, errorText, {kCertificate, record("2 CurlSFtpResponse::Listsftpdir(): Listsftpdir():end ")});
    add(compare("the listing", name("first") + "\n" + name("second") + "\n", contentOf(request.localPath)));
}

void Visitor::test(SFtpClient& /*facade*/)
{
    const SFtpRequest request = aimedAt("test");
    const int result = ISFtpClient::CreateClient()->TestSConnect(request, 0);
    judge("connection test", result, kUntouched,
          {record("1 CurlSFtpClient::TestSConnect(): begin test sftp connection"),
           record("1 CurlSFtpClient::TestSConnect(): == remotePath is: ") + request.remotePath, kCertificate,
           record("1 CurlSFtpClient::TestSConnect(): errorCode is: 0")});
}

Lines Visitor::output() const
{
    const std::string size = std::to_string(m_content.size());
    return {"Last-Modified: Thu, 01 Jan 2026 00:00:00 GMT\r", "Content-Length: " + size + "\r",
            "Accept-ranges: bytes\r", "-rw-r--r-- 1 backup backup " + size + " Jan 01 00:00 " + name("old"),
            name("printed")};
}

SFtpRequest Visitor::aimedAt(const std::string& path) const
{
    SFtpRequest request = m_login;
    request.remotePath = m_place.url + path;
    return request;
}

std::string Visitor::record(const std::string& text) const { return std::to_string(m_identifier) + " " + text; }

void Visitor::judge(const std::string& operation, int result, const std::string& errorText, const Lines& records)
{
    add(compare(operation + "'s result", nameOf(CURLE_OK), nameOf(result)));
    add(compare(operation + "'s error text", std::string(kUntouched), errorText));
    add(problem(operation + "'s records", sameLines(records, live::takeRecordsWithIdentifiers())));
}

void Visitor::add(const Lines& wrong) { m_wrong.insert(m_wrong.end(), wrong.begin(), wrong.end()); }
