#include "Operations.h"

#include "Failure.h"
#include "SetOption.h"
#include "Text.h"
#include "Transfer.h"

#include <openssl/rand.h>

#include <array>
#include <optional>

namespace session {

namespace {

// Digits that nobody else has.
std::string randomDigits()
{
    std::array<unsigned char, 6> bytes = {};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw refusal(CURLE_FAILED_INIT, "there are no random numbers for a temporary name");
    }
    constexpr char kDigits[] = "0123456789abcdef";
    std::string digits;
    for (const unsigned byte : bytes) {
        digits.append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
    }
    return digits;
}

/// An upload under a temporary name beside the target, until it is in place: renaming is one step for the server.
class Arrival
{
public:
    Arrival(const Work& work, const DataSource& source, std::int64_t size)
        : m_work(work), m_target(work.access.target()), m_source(source), m_size(size), m_name(m_target.name()),
          m_digits(randomDigits()),
          m_stored(work.access.options().atomicUpload ? hiddenName(m_name, m_digits + ".part") : m_name)
    {
    }

    void run()
    {
        CURLcode code = tryToSend(false);
        // Nothing has been sent then: the directory comes before the file.
        if (code == CURLE_REMOTE_ACCESS_DENIED || (m_target.isSsh() && code == CURLE_REMOTE_FILE_NOT_FOUND)) {
            code = tryToSend(true);
        }
        if (code == CURLE_QUOTE_ERROR && m_begun && m_stored != m_name) {
            replace();
        } else if (code != CURLE_OK) {
            throw Failure(*m_failure);
        }
    }

    /// What is left of a failure, the server would keep for ever. A call that was stopped has no time for that.
    void removeQuietly() noexcept
    try {
        if (hasBegun() && m_stored != m_name && !m_mustStay && m_work.call.verdict() == CURLE_OK) {
            const std::vector<std::string> commands = {"*" + removal(m_stored)};
            const std::optional<Failure> failed = command(commands);
            // What ended the upload may have ended the connection as well, which shows only now.
            if (failed && failed->code() == CURLE_RECV_ERROR && m_work.connection.replies().lines().empty()) {
                static_cast<void>(command(commands, true));
            }
        }
    } catch (...) { // of two failures, the first one is told
    }

private:
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
        std::vector<std::string> commands;
        if (m_work.access.options().verifyUpload && !m_target.isSsh()) {
            commands.push_back("*SIZE " + m_stored);
            transfer.requireSentSize();
        }
        if (m_stored != m_name) {
            append(commands, renaming(m_stored, m_name));
        }
        transfer.after(commands);
        const CURLcode code = transfer.tryToRun();
        m_begun = hasBegun();
        if (code != CURLE_OK) {
            m_failure = transfer.failure(code);
        }
        return code;
    }

    // Whether the server has begun to take the file.
    bool hasBegun() const { return m_begun || m_work.call.hasMoved() || m_work.connection.replies().openData(); }

    // Some servers do not rename over a file that is there: it must make room first, and is deleted last.
    void replace()
    {
        const std::string old = hiddenName(m_name, m_digits + ".old");
        if (command(renaming(m_name, old))) {
            throw Failure(*m_failure);
        }
        std::vector<std::string> commands = renaming(m_stored, m_name);
        commands.push_back("*" + removal(old));
        m_mustStay = true;
        if (const std::optional<Failure> failed = command(commands)) {
            if (failed->code() != CURLE_QUOTE_ERROR || command(renaming(old, m_name))) {
                throw Failure(failed->code(), std::string(failed->what()) + "; the new file may be under " + m_stored +
                                                  ", the old one under " + old);
            }
            m_mustStay = false;
            throw Failure(*failed);
        }
    }

    // In the directory of the target, over a new connection where `fresh` asks for it; nothing where all went well.
    std::optional<Failure> command(const std::vector<std::string>& commands, bool fresh = false) const
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        transfer.visit(m_target.parentUrl());
        transfer.withoutData();
        transfer.after(commands);
        set(transfer.handle(), CURLOPT_FRESH_CONNECT, fresh ? 1L : 0L);
        const CURLcode code = transfer.tryToRun();
        return code == CURLE_OK ? std::nullopt : std::optional(transfer.failure(code));
    }

    static void append(std::vector<std::string>& commands, const std::vector<std::string>& more)
    {
        commands.insert(commands.end(), more.begin(), more.end());
    }

    std::vector<std::string> renaming(const std::string& from, const std::string& to) const
    {
        if (m_target.isSsh()) {
            return {"rename " + quoted(m_target.commandPathInParent(from)) + " " +
                    quoted(m_target.commandPathInParent(to))};
        }
        return {"RNFR " + from, "RNTO " + to};
    }

    std::string removal(const std::string& name) const
    {
        return m_target.isSsh() ? "rm " + quoted(m_target.commandPathInParent(name)) : "DELE " + name;
    }

    const Work& m_work;
    const Target& m_target;
    const DataSource& m_source;
    std::int64_t m_size;
    std::string m_name;
    std::string m_digits;
    std::string m_stored;
    bool m_begun = false;
    bool m_mustStay = false; // it may be all that is left
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
