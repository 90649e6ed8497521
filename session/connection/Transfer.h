#ifndef SFTPCLIENT_SESSION_TRANSFER_H
#define SFTPCLIENT_SESSION_TRANSFER_H

#include "call/Call.h"
#include "call/Failure.h"
#include "connection/AnnouncedSource.h"
#include "connection/CommandList.h"
#include "connection/Connection.h"
#include "connection/Pace.h"
#include "files/LocalFiles.h"
#include "request/Access.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace session {

/// The text for an upload whose size on the server differs from the bytes sent.
std::string sizesDiffer(std::int64_t there, std::int64_t sent);

/// One libcurl transfer over a connection: set up step by step, then run.
class Transfer
{
public:
    /// REQUIRES: all three outlive this object; the connection has no other transfer.
    Transfer(Connection& connection, Access& access, Call& call);
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    void visit(const std::string& url);
    /// No data connection: only changes to the directory and runs the commands of `after`.
    void withoutData();
    /// Commands for the server once everything else is done. One that begins with "*" may fail.
    void after(const std::vector<std::string>& commands);
    /// Where received bytes go.
    void receive(const DataSink& sink);
    /// Data over TLS whose size the server has not reported must end with its close_notify.
    void requireEnd();
    /// Where bytes to send come from; `size` is -1 if unknown.
    void send(const DataSource& source, std::int64_t size);
    /// The same for a regular file, from `offset` on, appended to what the server has.
    void send(const LeavingFile& file, std::int64_t offset);
    /// Skips everything before `offset`.
    void receiveFrom(std::int64_t offset);
    /// For options that only one operation needs.
    CURL* handle() { return m_handle; }

    /// Ends an upload before the commands of `after` continue, unless the reply to SIZE is the number of bytes sent.
    void requireSentSize() { m_comparesSize = true; }

    /// Performs the transfer; throws `Failure` if it fails, and what sink, source or the host's progress have thrown.
    void run();
    /// The same, but returns libcurl's code unless the call itself had to end.
    CURLcode tryToRun();

    const Replies& replies() const { return m_connection.replies(); }
    /// Whether bytes may have been sent.
    bool hasAskedSource() const { return m_hasAsked; }
    /// The bytes sent, including those of an earlier attempt.
    std::int64_t sent() const { return m_source.given(); }
    /// Whether the size on the server differs from the bytes sent.
    bool hasFoundWrongSize() const { return m_foundCode == CURLE_PARTIAL_FILE; }
    /// The failure to throw for a transfer that ended with this code.
    Failure failure(CURLcode code) const;

private:
    void sendFrom(AnnouncedSource source, std::int64_t size);
    static size_t write(char* bytes, size_t one, size_t count, void* self) noexcept;
    static size_t read(char* bytes, size_t one, size_t count, void* self) noexcept;
    static size_t hear(char* bytes, size_t one, size_t count, void* self) noexcept;
    static int progress(void* self, curl_off_t toReceive, curl_off_t received, curl_off_t toSend,
                        curl_off_t sent) noexcept;
    static CURLcode secure(CURL* handle, void* context, void* self) noexcept;
    static int seek(void* file, curl_off_t offset, int origin) noexcept;
    static int begin(void* self, char* theirs, char* ours, int theirPort, int ourPort) noexcept;
    size_t take(const char* bytes, size_t count);
    size_t give(char* bytes, size_t count);
    void setPace(std::uint64_t rate);
    bool keepsPace(size_t count);
    void sendFirst(const std::string& command);
    void judgeReply();
    void judgeSize();
    void judgeEnd();
    void judgeLast();
    void watch(std::int64_t moved, std::int64_t all);

    Connection& m_connection;
    Access& m_access;
    Call& m_call;
    CURL* m_handle;
    CommandList m_first;            // before everything else
    std::string m_firstMustSucceed; // the command there; empty: it may fail
    CommandList m_after;
    DataSink m_sink;
    AnnouncedSource m_source;
    std::optional<Pace> m_pace; // where there is a limit
    std::int64_t m_moved = 0;   // by libcurl's count
    bool m_hasAsked = false;
    bool m_comparesSize = false;
    bool m_requiresEnd = false;
    bool m_hasData = true;
    bool m_isReached = false;     // logged in
    bool m_isStored = false;      // the server has confirmed the data, which libcurl sends after any reply below 400
    std::string m_reason;         // why the call had to end
    bool m_isRefusalLast = false; // nothing was said after it
    std::string m_refusal;        // the server's first, where no data moves
    std::string m_found;          // what the session itself detected
    CURLcode m_foundCode = CURLE_OK;
};

} // namespace session

#endif
