#ifndef SFTPCLIENT_SESSION_TRANSFER_H
#define SFTPCLIENT_SESSION_TRANSFER_H

#include "call/Call.h"
#include "call/Failure.h"
#include "connection/Connection.h"
#include "files/LocalFiles.h"
#include "request/Access.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace session {

/// What to say where the server has another number of bytes than it was sent.
std::string sizesDiffer(std::int64_t there, std::int64_t sent);

/// One transfer of libcurl's over a connection: set up step by step, then run.
class Transfer
{
public:
    /// REQUIRES: all three outlive this object; no other transfer is being made with the connection.
    Transfer(Connection& connection, Access& access, Call& call);
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    void visit(const std::string& url);
    /// No data connection: only what `after` and the way to the directory bring about.
    void withoutData();
    /// Commands to the server when everything else is done. A "*" in front lets one fail.
    void after(const std::vector<std::string>& commands);
    /// Where received bytes go.
    void receive(const DataSink& sink);
    /// Where bytes to send come from; `size` -1 where it is not known.
    void send(const DataSource& source, std::int64_t size);
    /// The same for a regular file, from `offset` on, behind what the server has.
    void send(const LeavingFile& file, std::int64_t offset);
    /// Leaves out what comes before `offset`.
    void receiveFrom(std::int64_t offset);
    /// For what only one operation needs.
    CURL* handle() { return m_handle; }

    /// Ends an upload whose file is not whole on the server before `after` goes on: the reply to SIZE must tell what
    /// was sent.
    void requireSentSize() { m_comparesSize = true; }

    /// Makes the transfer; throws `Failure` where it fails, and what sink, source or the host's progress have thrown.
    void run();
    /// The same, but returns libcurl's code of a failure other than the call's own end.
    CURLcode tryToRun();

    const Replies& replies() const { return m_connection.replies(); }
    /// Whether bytes may have gone.
    bool hasAskedSource() const { return m_hasAsked; }
    /// The bytes that have gone, those before them included.
    std::int64_t sent() const { return m_sent; }
    /// Whether the server has another number of bytes than was sent.
    bool hasFoundWrongSize() const { return m_foundCode == CURLE_PARTIAL_FILE; }
    /// What to throw for a transfer that ended with this code.
    Failure failure(CURLcode code) const;

private:
    static size_t write(char* bytes, size_t one, size_t count, void* self) noexcept;
    static size_t read(char* bytes, size_t one, size_t count, void* self) noexcept;
    static size_t hear(char* bytes, size_t one, size_t count, void* self) noexcept;
    static int progress(void* self, curl_off_t toReceive, curl_off_t received, curl_off_t toSend,
                        curl_off_t sent) noexcept;
    static int seek(void* file, curl_off_t offset, int origin) noexcept;
    static int begin(void* self, char* theirs, char* ours, int theirPort, int ourPort) noexcept;
    size_t take(const char* bytes, size_t count);
    size_t give(char* bytes, size_t count);
    void requireAnnounced(bool isEnd);
    void judgeReply();
    void judgeSize();
    void watch(std::int64_t moved, std::int64_t all);

    Connection& m_connection;
    Access& m_access;
    Call& m_call;
    CURL* m_handle;
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> m_after;
    DataSink m_sink;
    DataSource m_source;
    std::int64_t m_sizeToSend = -1;
    std::int64_t m_sent = 0;
    std::int64_t m_moved = 0; // by libcurl's count
    bool m_hasAsked = false;
    bool m_comparesSize = false;
    bool m_isStored = false; // the server has confirmed the data
    std::string m_reason;    // why the call had to end
    std::string m_found;     // what the session itself found wrong
    CURLcode m_foundCode = CURLE_OK;
};

} // namespace session

#endif
