#include "operation/Operations.h"

#include "call/Failure.h"
#include "call/SetOption.h"
#include "connection/Transfer.h"
#include "files/LocalFiles.h"
#include "request/Digest.h"
#include "request/Text.h"

#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <optional>

namespace session {

namespace {

constexpr std::size_t kDigits = 12;

// Unique digits.
std::string randomDigits()
{
    std::array<char, kDigits / 2> bytes = {};
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(bytes.size())) != 1) {
        throw refusal(CURLE_FAILED_INIT, "there are no random numbers for a temporary name");
    }
    return inHex({bytes.data(), bytes.size()});
}

// The same digits for each attempt to send this content to this place.
std::string digitsFor(const Work& work, const LeavingFile& file)
{
    Digest digest;
    digest.add(work.access.identity().server);
    digest.add(work.access.request().userName);
    digest.add(work.access.target().url());
    digest.add(file.version());
    return inHex(digest.value()).substr(0, kDigits);
}

/// An upload to a temporary name beside the target, then renamed into place: for the server that is one step.
class Arrival
{
public:
    Arrival(const Work& work, const DataSource& source, std::int64_t size) : Arrival(work, size, randomDigits())
    {
        m_source = source;
    }

    /// What a failure leaves is kept for the next attempt.
    /// REQUIRES: the file is locked, and outlives this object.
    Arrival(const Work& work, const LeavingFile& file) : Arrival(work, file.size(), digitsFor(work, file))
    {
        m_file = &file;
        m_isKept = true;
    }

    void run()
    {
        if (m_file != nullptr) {
            m_offset = sizeToGoOnFrom();
            if (m_offset == 0 && m_isThere) {
                makeRoom();
            }
            if (m_offset == m_size && m_size > 0) {
                m_begun = true;
                m_work.call.beginTransfer(m_size, m_offset);
                putInPlace();
                return;
            }
        }
        CURLcode code = tryToSend(false);
        if (m_file != nullptr && (m_begun ? m_offset > 0 && m_isWrong : isRefusal(code))) {
            beginAnew();
            code = tryToSend(false);
        }
        // The directory comes first, so nothing has been sent yet.
        if (code == CURLE_REMOTE_ACCESS_DENIED || (m_target.isSsh() && code == CURLE_REMOTE_FILE_NOT_FOUND)) {
            code = tryToSend(true);
        }
        if (code == CURLE_QUOTE_ERROR && m_begun && m_stored != m_name) {
            replace();
        } else if (code != CURLE_OK) {
            throw Failure(*m_failure);
        } else if (m_target.isSsh()) {
            putInPlace();
        }
    }

    /// Otherwise the server would keep a failure's file for ever. A call that was stopped has no time for it.
    void removeQuietly() noexcept
    try {
        if (m_begun && m_stored != m_name && !m_mustStay && (!m_isKept || m_isWrong) &&
            m_work.call.verdict() == CURLE_OK) {
            const std::vector<std::string> commands = {"*" + removal(m_stored)};
            const std::optional<Failure> failed = command(commands);
            // The upload's failure may have ended the connection as well, which only shows now.
            if (failed && failed->code() == CURLE_RECV_ERROR && m_work.connection.replies().lines().empty()) {
                static_cast<void>(command(commands));
            }
        }
    } catch (...) { // of two failures, the first is reported
    }

private:
    Arrival(const Work& work, std::int64_t size, const std::string& digits)
        : m_work(work), m_target(work.access.target()), m_size(size), m_name(m_target.name()), m_digits(digits),
          m_stored(work.access.options().atomicUpload ? hiddenName(m_name, m_digits + ".part") : m_name)
    {
    }

    // A server may forbid appending or overwriting, or may not have ended an earlier attempt yet. libcurl has several
    // codes for that.
    bool isRefusal(CURLcode code) const
    {
        return m_target.isSsh() ? code == CURLE_REMOTE_ACCESS_DENIED
                                : code != CURLE_OK && code != CURLE_REMOTE_ACCESS_DENIED &&
                                      m_work.connection.replies().isLastRefusal();
    }

    // A connection that broke says nothing about what is there.
    bool isAnswer(CURLcode code) const
    {
        return code == CURLE_OK || code == CURLE_WRITE_ERROR || code == CURLE_BAD_DOWNLOAD_RESUME || isRefusal(code) ||
               (m_target.isSsh() && (code == CURLE_REMOTE_FILE_NOT_FOUND || code == CURLE_SSH));
    }

    // Under a unique name: an earlier attempt may still be at work under the other.
    void beginAnew()
    {
        makeRoom();
        m_offset = 0;
        m_isKept = false;
        m_begun = false;
        m_digits = randomDigits();
        m_stored = hiddenName(m_name, m_digits + ".part");
    }

    void makeRoom() const { static_cast<void>(command({"*" + removal(m_stored)})); }

    std::string storedUrl() const { return m_target.parentUrl() + percentEncoded(m_stored); }

    // How much of the file the server has from an earlier attempt, if its last bytes match; otherwise 0.
    std::int64_t sizeToGoOnFrom()
    {
        const std::optional<RemoteEntry> there = fileAt(m_work, storedUrl());
        m_isThere = there.has_value();
        if (!there || there->size <= 0 || there->size > m_size) {
            return 0;
        }
        const std::int64_t compared = std::min(there->size, kOverlap);
        const std::int64_t offset = there->size - compared;
        std::string end;
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        m_work.call.beginTransfer(m_size, offset);
        transfer.visit(storedUrl());
        transfer.receiveFrom(offset);
        transfer.receive([&](const char* bytes, std::size_t count) {
            end.append(bytes, count);
            return end.size() <= static_cast<std::size_t>(compared);
        });
        const CURLcode code = transfer.tryToRun();
        // Where the server ignored REST, it sent the beginning, and may say now that this was broken off.
        const bool hasCome = code == CURLE_PARTIAL_FILE && end.size() >= static_cast<std::size_t>(compared);
        if (m_work.call.verdict() != CURLE_OK || !(isAnswer(code) || hasCome)) {
            throw transfer.failure(code);
        }
        if (!m_work.connection.isUsable()) {
            m_work.connection.cut(); // another data connection might fail as well
        }
        return code == CURLE_OK && end == m_file->part(offset, static_cast<std::size_t>(compared)) ? there->size : 0;
    }

    CURLcode tryToSend(bool makesDirectories)
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        m_work.call.beginTransfer(m_size, m_offset);
        transfer.visit(storedUrl());
        if (m_file != nullptr) {
            transfer.send(*m_file, m_offset);
        } else {
            transfer.send(m_source, m_size);
        }
        if (makesDirectories) {
            // One CWD per directory, each made if missing.
            set(transfer.handle(), CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_MULTICWD));
            set(transfer.handle(), CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR_RETRY));
        }
        std::vector<std::string> commands;
        if (verifies() && !m_target.isSsh()) {
            commands.push_back("*SIZE " + m_stored);
            transfer.requireSentSize();
        }
        if (m_stored != m_name && !m_target.isSsh()) {
            append(commands, renaming(m_stored, m_name));
        }
        transfer.after(commands);
        const CURLcode code = run(transfer);
        m_sent = transfer.sent();
        m_isWrong = transfer.hasFoundWrongSize();
        if (code != CURLE_OK) {
            m_failure = transfer.failure(code);
        }
        return code == CURLE_OK && m_target.isSsh() && verifies() ? checkedOverSsh() : code;
    }

    // Over FTP, the transfer itself does it.
    CURLcode checkedOverSsh()
    {
        const std::optional<RemoteEntry> there = fileAt(m_work, storedUrl());
        m_isWrong = !there || there->size != m_sent;
        if (!m_isWrong) {
            return CURLE_OK;
        }
        m_failure = refusal(CURLE_PARTIAL_FILE, sizesDiffer(there ? there->size : 0, m_sent));
        return m_failure->code();
    }

    // Notes whether the server has begun to receive the file, also if a function of the caller throws.
    void noteBegin(const Transfer& transfer)
    {
        m_begun = m_begun || transfer.hasAskedSource() || transfer.replies().openData();
    }

    CURLcode run(Transfer& transfer)
    {
        try {
            const CURLcode code = transfer.tryToRun();
            noteBegin(transfer);
            return code;
        } catch (const Failure& failure) {
            noteBegin(transfer);
            m_isWrong = failure.code() == CURLE_READ_ERROR; // the local file has changed
            throw;
        } catch (...) {
            noteBegin(transfer);
            throw;
        }
    }

    bool verifies() const { return m_work.access.options().verifyUpload || m_offset > 0; }

    void putInPlace()
    {
        if (m_stored == m_name) {
            return;
        }
        m_failure = command(renaming(m_stored, m_name));
        if (m_failure && m_failure->code() == CURLE_QUOTE_ERROR) {
            replace();
        } else if (m_failure) {
            throw Failure(*m_failure);
        }
    }

    // For servers that cannot rename over an existing file: it is renamed first, and deleted last. If it cannot be
    // deleted, it gets its name back. A directory keeps its name: an upload that is killed must not hide it.
    void replace()
    {
        if (isDirectory()) {
            throw Failure(*m_failure);
        }
        const std::string old = hiddenName(m_name, m_digits + ".old");
        if (const std::optional<Failure> failed = command(renaming(m_name, old))) {
            throw Failure(m_work.call.verdict() == CURLE_OK ? *m_failure : *failed);
        }
        std::vector<std::string> commands = renaming(m_stored, m_name);
        commands.push_back(removal(old));
        m_mustStay = true;
        if (const std::optional<Failure> failed = command(commands)) {
            if (failed->code() == CURLE_QUOTE_ERROR) {
                static_cast<void>(command(renaming(m_name, m_stored))); // if it got that far
            }
            if (failed->code() != CURLE_QUOTE_ERROR || command(renaming(old, m_name))) {
                throw Failure(failed->code(), std::string(failed->what()) + "; the new file may be under " + m_stored +
                                                  ", the old one under " + old);
            }
            m_mustStay = false;
            throw Failure(*failed);
        }
    }

    // Whether the name that the file is to have is a directory's: one can be entered or, over SSH, listed. Throws the
    // upload's failure where the server does not answer that.
    bool isDirectory() const
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        transfer.visit(m_target.directoryUrl());
        if (m_target.isSsh()) {
            // The whole of it: libcurl would end the connection with a listing that is stopped.
            transfer.receive([](const char*, std::size_t) { return true; });
        } else {
            transfer.withoutData();
        }
        const CURLcode code = transfer.tryToRun();
        const bool isAnswered = code == CURLE_OK || code == CURLE_REMOTE_ACCESS_DENIED ||
                                (m_target.isSsh() && (code == CURLE_REMOTE_FILE_NOT_FOUND || code == CURLE_SSH));
        if (!isAnswered) {
            throw m_work.call.verdict() == CURLE_OK ? Failure(*m_failure) : transfer.failure(code);
        }
        return code == CURLE_OK;
    }

    // Runs commands in the target's directory; nothing on success.
    std::optional<Failure> command(const std::vector<std::string>& commands) const
    {
        Transfer transfer(m_work.connection, m_work.access, m_work.call);
        transfer.visit(m_target.parentUrl());
        transfer.withoutData();
        transfer.after(commands);
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
    DataSource m_source;
    const LeavingFile* m_file = nullptr;
    std::int64_t m_size;
    std::int64_t m_offset = 0; // what the server has from an earlier attempt
    std::int64_t m_sent = 0;   // including that
    std::string m_name;
    std::string m_digits;
    std::string m_stored;
    bool m_isKept = false;  // for a later attempt
    bool m_isThere = false; // something is there from an earlier attempt
    bool m_begun = false;
    bool m_mustStay = false; // it may be the only copy
    bool m_isWrong = false;  // must not be continued
    std::optional<Failure> m_failure;
};

// After an upload over TLS 1.3, refused or not, libcurl has lost the session that the server expects again.
void leaveNewestTls(const Work& work)
{
    if (work.access.speaksNewestTls(work.connection.newestTls)) {
        work.connection.giveUp();
    }
}

void carryOut(const Work& work, Arrival& arrival)
{
    try {
        arrival.run();
    } catch (...) {
        arrival.removeQuietly();
        leaveNewestTls(work);
        throw;
    }
    leaveNewestTls(work);
    work.call.finishing();
    work.call.report(true);
}

} // namespace

void upload(const Work& work, const DataSource& source, std::int64_t size)
{
    work.access.target().requireFile();
    Arrival arrival(work, source, size);
    carryOut(work, arrival);
}

void uploadFile(const Work& work, const std::string& localPath)
{
    work.access.target().requireFile();
    const LeavingFile file(localPath);
    // Without the temporary name, an earlier attempt could not be told from another file.
    if (work.access.options().resume && work.access.options().atomicUpload && file.lock()) {
        Arrival arrival(work, file);
        carryOut(work, arrival);
        return;
    }
    upload(
        work, [&file](char* bytes, std::size_t count) { return file.read(bytes, count); }, file.size());
}

} // namespace session
