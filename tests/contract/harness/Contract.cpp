#include "harness/Contract.h"

#include <filesystem>
#include <fstream>
#include <sstream>

Lines operator+(Lines left, const Lines& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Contract::Contract()
{
    std::string pattern = testing::TempDir() + "contract-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("No folder can be made in " + testing::TempDir());
    }
    m_folder = pattern;
    scripted::curl() = {};
    recording::host() = {};
    recorded::files() = {};
    recorded::openSsl() = {};

    request.remotePath = "ftp://server:2121/backup/";
    request.remoteFileName = "a.bak";
    request.localPath = path("local");
    request.userName = "operator";
    request.password = kPassword;
    request.caCert = "the certificate";
    request.port = 4000060021; // of all 32 bits, and not the one in the URL
    scripted::curl().names[&request.caCert] = "the request's caCert";
}

Contract::~Contract() { std::filesystem::remove_all(m_folder); }

Lines Contract::journalOf(const std::function<void()>& piece)
{
    journal::clear();
    const memory::Watch watch(kPassword);
    piece();
    const memory::Pause pause;
    return journal::take();
}

void Contract::performGives(CURLcode code)
{
    scripted::curl().perform = [code](scripted::Handle&) { return code; };
}

std::string Contract::contentOf(const std::string& path)
{
    const memory::Pause pause;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return file ? content.str() : "no such file";
}

void Contract::writeFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

void Contract::keepMembers(CurlSFtpResponse& transfer)
{
    transfer.statusCode = 200;
    transfer.statusText = "kept";
    transfer.recvData = "kept";
    transfer.headers["kept"] = {"kept"};
    transfer.cert = "kept";
}

void Contract::expectMembersKept(const CurlSFtpResponse& transfer)
{
    EXPECT_EQ(200U, transfer.statusCode);
    EXPECT_EQ("kept", transfer.statusText);
    EXPECT_EQ("kept", transfer.recvData);
    EXPECT_EQ((std::map<std::string, std::set<std::string>>{{"kept", {"kept"}}}), transfer.headers);
    EXPECT_EQ("kept", transfer.cert);
}

Lines Contract::tlsStep(int handle)
{
    const std::string number = std::to_string(handle);
    return {
        number + " FTPSSLAUTH = 0",
        number + " USE_SSL = 3",
        number + " SSLCERTTYPE = PEM",
        "log 1 SFtpClient 0 sftpSetCertTmp(): 0|Establish SSL with cert|",
        number + " SSL_VERIFYPEER = 1",
        number + " SSL_CTX_DATA = the request's caCert",
        number + " SSL_CTX_FUNCTION = sftp_sslCtx_function",
        number + " SSL_VERIFYHOST = 0",
    };
}
