#ifndef TESTSERVER_SESSION_H
#define TESTSERVER_SESSION_H

#include "Connection.h"
#include "DataChannel.h"
#include "Faults.h"
#include "FileTimes.h"
#include "FtpServer.h"
#include "MeetingPoint.h"
#include "OpenSockets.h"
#include "Storage.h"

#include <openssl/ssl.h>

#include <cstdint>
#include <string>

namespace testserver {

/// What all sessions of a server share; none of it changes but the meeting point and the times, which are made for many
/// threads.
struct Shared
{
    const ServerConfig& config;
    const Storage& storage;
    MeetingPoint& meetingPoint;
    FileTimes& times;
    boost::asio::io_context& context;
    SSL_CTX* controlTls;
    SSL_CTX* dataTls;
};

/// How a directory is listed: by NLST, LIST or MLSD.
enum class ListingForm
{
    Names,
    Details,
    Facts
};

/// One client's session, from greeting to QUIT, on its own thread.
class Session
{
public:
    /// The number of the session counts from 1. What happens is added to the transcript as it happens.
    Session(const Shared& shared, boost::asio::ip::tcp::socket socket, OpenSockets& sockets, unsigned number,
            Transcript& transcript);

    void run();

private:
    // The conversation.
    bool greet();
    bool startControlTls();
    void serve(const std::string& line);
    bool misbehaves(const std::string& command);
    bool meet(std::uint64_t sessions);
    void reply(const std::string& text);
    void sendReply(const std::string& bytes);
    void sendEndlessly(const std::string& bytes);
    void leave();

    // The commands.
    void carryOut(const std::string& command, const std::string& argument);
    bool carryOutBeforeLogin(const std::string& command, const std::string& argument);
    bool carryOutOnDirectories(const std::string& command, const std::string& argument);
    bool carryOutOnFiles(const std::string& command, const std::string& argument);
    bool carryOutSettings(const std::string& command, const std::string& argument);
    void auth(const std::string& argument);
    void user(const std::string& argument);
    void pass(const std::string& argument);
    void passive(bool extended);
    void restart(const std::string& argument);
    void size(const std::string& argument);
    void rename(const std::string& argument);
    void renameFrom(const std::string& argument);
    void renameTo(const std::string& argument);
    void move(const std::string& oldPath, const std::string& newPath);
    void remove(const std::string& argument);
    void removeDirectory(const std::string& argument);
    void setTime(const std::string& argument);
    void checksum(const std::string& command, const std::string& argument);
    void options(const std::string& argument);
    std::string features() const;
    std::string timeOf(const std::string& path) const;
    bool offers(const std::string& command) const;
    void tellFacts(const std::string& argument);
    void changeDirectory(const std::string& argument);
    void makeDirectory(const std::string& argument);
    std::string details(const std::string& directory, const std::string& name) const;
    std::string facts(const std::string& directory, const std::string& name) const;
    void list(const std::string& argument, ListingForm form);
    void retrieve(const std::string& argument);
    void store(const std::string& argument, bool append);

    // The data connection of a transfer.
    bool openData();
    void closeData(TransferEnd end, const char* moved);

    std::string absolute(const std::string& argument) const { return Storage::absolute(m_cwd, argument); }

    const Shared& m_shared;
    OpenSockets& m_sockets;
    Connection m_control;
    DataChannel m_data;
    FaultPlan m_faults;
    Transcript& m_transcript;
    std::string m_cwd;
    std::string m_user;
    std::string m_renamed; // what RNFR named; empty: nothing
    bool m_loggedIn = false;
    bool m_protected = false;
    bool m_leaving = false;
    bool m_split = false;
    std::uint64_t m_pad = 0;
    std::string m_appendix;
    bool m_hashIsSha256 = false;
    std::uint64_t m_restart = 0;
};

} // namespace testserver

#endif
