#ifndef NETWORK_PLACE_H
#define NETWORK_PLACE_H

#include "support/Lines.h"
#include "support/TemporaryFolder.h"

#include <Certificates.h>
#include <FtpServer.h>
#include <ISFtpClient.h>
#include <SFtpSession.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

enum class Operation
{
    Test,
    Upload,
    List,
    Download,
    Rename,
    Delete
};

constexpr Operation kOperations[] = {Operation::Test,     Operation::Upload, Operation::List,
                                     Operation::Download, Operation::Rename, Operation::Delete};

std::string nameOf(Operation operation);

enum class Client
{
    Core,   ///< `SFtpClient`, and for the connection test `ISFtpClient`
    Session ///< `SFtpSession`
};

constexpr Client kClients[] = {Client::Core, Client::Session};

std::string nameOf(Client client);

/// A test server of its own, and its six operations with either client. Several places may be used at the same time,
/// each by one thread.
class Place
{
public:
    /// How an operation ended.
    struct Outcome
    {
        int code = -1;
        std::string errorText;
        bool isDone = false; ///< the operation has had its effect, and the whole of it
        std::string words;   ///< the commands that the server got, without their arguments
    };

    /// `config` is what is wanted of the server, but for its folder and login; `bytes` are those of the file that
    /// moves.
    Place(const testserver::CertificateAuthority& authority, testserver::ServerConfig config, std::size_t bytes = 1000);
    ~Place();

    /// The client reaches the server at this port, and on this host.
    void aim(std::uint16_t port, const std::string& host = "localhost");

    std::uint16_t port() const { return m_server->port(); }

    /// Performs one operation; a session is kept for the next one.
    Outcome run(Client client, Operation operation);

    /// Any other call of the kept session, with files and a request as for `like`, which it is to do in its own way.
    using Call = std::function<int(SFtpSession& session, SFtpRequest& request, std::string& errorText)>;
    Outcome call(Operation like, const Call& call);

    /// The path of what the server has by this name.
    std::string served(const std::string& name) const { return m_folder.file("served/" + name); }

    /// What the file that moves holds.
    const std::string& content() const { return m_content; }

    /// Ends the session.
    void endSession() { m_session.reset(); }

    /// What each session of the server has seen; ends the client's.
    std::vector<Lines> transcripts();

    /// The bytes that the last download or listing has left; -1 if there is no file.
    std::int64_t bytesLeft() const;

    SessionOptions options; ///< for a session that is yet to begin
    SFtpRequest request;

private:
    SFtpSession& session();
    void prepare(Operation operation);
    Outcome ended(Operation operation, int code, const std::string& errorText);
    int perform(Client client, Operation operation, std::string& errorText);
    int performCore(Operation operation, std::string& errorText);
    int performOn(SFtpClient& client, Operation operation, std::string& errorText);
    bool isDone(Operation operation) const;
    std::string local(const std::string& name) const { return m_folder.file("local/" + name); }

    TemporaryFolder m_folder;
    std::string m_content;
    std::mutex m_mutex;
    std::string m_words;
    std::string m_base; ///< of URLs
    bool m_isImplicit;
    std::unique_ptr<testserver::FtpServer> m_server;
    std::unique_ptr<SFtpSession> m_session;
};

#endif
