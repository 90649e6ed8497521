#include "harness/Place.h"

#include "support/RandomBytes.h"

#include <SFtpClient.h>

#include <filesystem>
#include <utility>

std::string nameOf(Operation operation)
{
    static const char* const kNames[] = {"test", "upload", "list", "download", "rename", "delete"};
    return kNames[static_cast<std::size_t>(operation)];
}

std::string nameOf(Client client) { return client == Client::Core ? "SFtpClient" : "SFtpSession"; }

Place::Place(const testserver::CertificateAuthority& authority, testserver::ServerConfig config, std::size_t bytes)
    : m_content(randomBytes(bytes)), m_isImplicit(config.tls == testserver::TlsMode::Implicit)
{
    std::filesystem::create_directories(served("d"));
    std::filesystem::create_directory(local(""));
    config.root = served("");
    config.password = "correct horse battery";
    if (config.certificate.certificatePem.empty()) {
        config.certificate = authority.issue();
    }
    config.onCommand = [this](const std::string& word) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_words += (m_words.empty() ? "" : " ") + word;
    };
    request.userName = config.user;
    request.password = config.password;
    request.caCert = authority.certificatePem();
    m_server = std::make_unique<testserver::FtpServer>(config);
    aim(m_server->port());
}

// First the clients, then the server that calls this object.
Place::~Place()
{
    m_session.reset();
    m_server.reset();
}

void Place::aim(std::uint16_t port, const std::string& host)
{
    m_base = (m_isImplicit ? "ftps://" : "ftp://") + host + ":" + std::to_string(port);
    request.port = port;
}

Place::Outcome Place::run(Client client, Operation operation)
{
    prepare(operation);
    std::string errorText;
    const int code = perform(client, operation, errorText);
    return ended(operation, code, errorText);
}

Place::Outcome Place::call(Operation like, const Call& call)
{
    prepare(like);
    std::string errorText;
    const int code = call(session(), request, errorText);
    return ended(like, code, errorText);
}

Place::Outcome Place::ended(Operation operation, int code, const std::string& errorText)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {code, errorText, isDone(operation), std::exchange(m_words, {})};
}

std::vector<Lines> Place::transcripts()
{
    m_session.reset();
    return m_server->transcripts();
}

std::int64_t Place::bytesLeft() const
{
    std::error_code failed;
    const std::uintmax_t bytes = std::filesystem::file_size(local("file"), failed);
    return failed ? -1 : static_cast<std::int64_t>(bytes);
}

void Place::prepare(Operation operation)
{
    for (const std::string& each : {served("d/new.bak"), served("d/up.bak"), local("file")}) {
        std::filesystem::remove(each);
    }
    writeFile(served("d/a.bak"), m_content);
    request.remotePath = m_base + "/d/";
    request.remoteFileName = "a.bak";
    request.localPath = local("file");
    if (operation == Operation::Upload) {
        request.remotePath += "up.bak";
        writeFile(local("file"), m_content);
    } else if (operation == Operation::Download) {
        request.remotePath += "a.bak";
    } else if (operation == Operation::Rename) {
        request.localPath = "new.bak";
    }
}

int Place::perform(Client client, Operation operation, std::string& errorText)
{
    if (client == Client::Core) {
        return performCore(operation, errorText);
    }
    return operation == Operation::Test ? session().TestSConnect(request, errorText)
                                        : performOn(session(), operation, errorText);
}

SFtpSession& Place::session()
{
    if (!m_session) {
        m_session = std::make_unique<SFtpSession>(options);
    }
    return *m_session;
}

int Place::performCore(Operation operation, std::string& errorText)
{
    SFtpClient facade;
    return operation == Operation::Test ? ISFtpClient::CreateClient()->TestSConnect(request, 90)
                                        : performOn(facade, operation, errorText);
}

// A session is an `SFtpClient`, too.
int Place::performOn(SFtpClient& client, Operation operation, std::string& errorText)
{
    switch (operation) {
    case Operation::Upload:
        return client.UploadFileToSFtpServer(request, errorText);
    case Operation::List:
        return client.Listsftpdir(request, errorText);
    case Operation::Download:
        return client.DownLoadSFtpFile(request, errorText);
    case Operation::Rename:
        return client.ReNameSFtpFile(request, errorText);
    default:
        return client.DelSFtpFile(request, errorText);
    }
}

bool Place::isDone(Operation operation) const
{
    switch (operation) {
    case Operation::Test:
        return true;
    case Operation::Upload:
        return contentOf(served("d/up.bak")) == m_content;
    case Operation::List:
        return contentOf(local("file")) == "a.bak\n";
    case Operation::Download:
        return contentOf(local("file")) == m_content;
    case Operation::Rename:
        return contentOf(served("d/new.bak")) == m_content && !std::filesystem::exists(served("d/a.bak"));
    default:
        return !std::filesystem::exists(served("d/a.bak"));
    }
}
