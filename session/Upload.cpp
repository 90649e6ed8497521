#include "Operations.h"

#include "Failure.h"
#include "Quoting.h"
#include "SetOption.h"
#include "Text.h"
#include "Transfer.h"

#include <openssl/rand.h>

#include <array>
#include <optional>

namespace session {

namespace {

// A name that nobody else has, beside the target: renaming it into place is one step for the server.
std::string temporaryName(const std::string& name)
{
    std::array<unsigned char, 6> bytes = {};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw refusal(CURLE_FAILED_INIT, "there are no random numbers for a temporary name");
    }
    constexpr char kDigits[] = "0123456789abcdef";
    std::string temporary = "." + name + ".";
    for (const unsigned byte : bytes) {
        temporary.append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
    }
    return temporary + ".part";
}

/// An upload under a name of its own, until it is in place.
class Arrival
{
public:
    Arrival(const Work& work, const DataSource& source, std::int64_t size)
        : m_work(work), m_target(work.access.target()), m_source(source), m_size(size), m_name(m_target.name()),
          m_stored(work.access.options().atomicUpload ? temporaryName(m_name) : m_name)
    {
    }

    void run()
    {
        CURLcode code = tryToSend(false);
        // Nothing has been sent then: the directory comes before the file.
        if (code == CURLE_REMOTE_ACCESS_DENIED || (m_target.isSsh() && code == CURLE_REMOTE_FILE_NOT_FOUND)) {
            code = tryToSend(true);
        }
        if (code == CURLE_QUOTE_ERROR && m_target.isSsh() && isStored()) {
            replaceOverSsh();
        } else if (code != CURLE_OK) {
            throw Failure(*m_failure);
        }
    }

    // What is left of a failure that the server would keep for ever.
    void removeQuietly() const
    {
        if (!isStored() || m_stored == m_name || m_work.call.verdict() != CURLE_OK) {
            return;
        }
        // What ended the upload may have ended the connection as well, which shows only now.
        if (tryToRemove(false) == CURLE_RECV_ERROR && m_work.connection.replies().lines().empty()) {
            tryToRemove(true);
        }
    }

private:
    bool isStored() const { return m_begun; }

    CURLcode tryToRemove(bool fresh) const
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        transfer.visit(m_target.parentUrl());
        transfer.withoutData();
        transfer.after({removal(m_stored)});
        set(transfer.handle(), CURLOPT_FRESH_CONNECT, fresh ? 1L : 0L);
        return transfer.tryToRun();
    }

    CURLcode tryToSend(bool makesDirectories)
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        m_work.call.beginTransfer(m_size);
        transfer.visit(m_target.parentUrl() + percentEncoded(m_stored));
        transfer.send(m_source, m_size);
        if (makesDirectories) {
            // Each missing directory is made on the way to the next one.
            set(transfer.handle(), CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_MULTICWD));
            set(transfer.handle(), CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR_RETRY));
        }
        transfer.after(commandsAfterwards());
        if (m_work.access.options().verifyUpload) {
            transfer.requireSentSize();
        }
        const CURLcode code = transfer.tryToRun();
        m_begun = m_begun || m_work.call.hasMoved() || transfer.dataWasOpened();
        if (code != CURLE_OK) {
            m_failure = transfer.failure(code);
        }
        return code;
    }

    std::vector<std::string> commandsAfterwards() const
    {
        std::vector<std::string> commands;
        if (m_work.access.options().verifyUpload && !m_target.isSsh()) {
            commands.push_back("*SIZE " + m_stored);
        }
        if (m_stored != m_name && m_target.isSsh()) {
            commands.push_back(renamingOverSsh());
        } else if (m_stored != m_name) {
            commands.push_back("RNFR " + m_stored);
            commands.push_back("RNTO " + m_name);
        }
        return commands;
    }

    std::string renamingOverSsh() const
    {
        return "rename " + quoted(m_target.commandPathInParent(m_stored)) + " " +
               quoted(m_target.commandPathInParent(m_name));
    }

    std::string removal(const std::string& name) const
    {
        return m_target.isSsh() ? "*rm " + quoted(m_target.commandPathInParent(name)) : "*DELE " + name;
    }

    // SFTP's rename does not replace a file, so that the old one must go first.
    void replaceOverSsh() const
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        transfer.visit(m_target.parentUrl());
        transfer.withoutData();
        transfer.after({removal(m_name), renamingOverSsh()});
        transfer.run();
    }

    const Work& m_work;
    const Target& m_target;
    const DataSource& m_source;
    std::int64_t m_size;
    std::string m_name;
    std::string m_stored;
    bool m_begun = false;
    std::optional<Failure> m_failure;
};

} // namespace

void upload(const Work& work, const DataSource& source, std::int64_t size)
{
    if (work.access.target().isDirectory()) {
        throw refusal(CURLE_URL_MALFORMAT, "remotePath ends in \"/\" and so names a directory");
    }
    Arrival arrival(work, source, size);
    try {
        arrival.run();
    } catch (...) {
        arrival.removeQuietly();
        throw;
    }
    if (work.access.speaksNewestTls(work.connection)) {
        // After an upload over TLS 1.3, libcurl has lost the session that the server wants to see again.
        work.connection.giveUp();
    }
    work.call.finishing();
    work.call.report(true);
}

} // namespace session
