#include "connection/Transfer.h"

#include "call/SetOption.h"
#include "request/Text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace session {

namespace {

// libcurl took the reply to another command for that, and keeps the connection: each later reply would be off by one.
// It also keeps a connection that broke off within a reply, after which libcurl 7.88 uses memory that it has freed.
bool isOutOfStep(CURLcode code)
{
    return code == CURLE_FTP_WEIRD_PASV_REPLY || code == CURLE_FTP_WEIRD_227_FORMAT || code == kTooLarge ||
           code == CURLE_FTP_CANT_GET_HOST || code == CURLE_WEIRD_SERVER_REPLY || code == CURLE_RECV_ERROR ||
           code == CURLE_SEND_ERROR || code == CURLE_GOT_NOTHING || code == CURLE_OPERATION_TIMEDOUT;
}

// Hosts know a refused directory (9) as a missing file (78).
CURLcode asReported(CURLcode code) { return code == CURLE_REMOTE_ACCESS_DENIED ? CURLE_REMOTE_FILE_NOT_FOUND : code; }

} // namespace

std::string sizesDiffer(std::int64_t there, std::int64_t sent)
{
    return "the server has " + std::to_string(there) + " of the " + std::to_string(sent) + " bytes that were sent";
}

Transfer::Transfer(Connection& connection, Access& access, Call& call)
    : m_connection(connection), m_access(access), m_call(call), m_handle(connection.renew()),
      m_first(nullptr, curl_slist_free_all), m_after(nullptr, curl_slist_free_all)
{
    access.applyTo(m_handle, call, connection.newestTls);
    set(m_handle, CURLOPT_NOPROGRESS, 0L);
    set(m_handle, CURLOPT_XFERINFOFUNCTION, progress);
    set(m_handle, CURLOPT_XFERINFODATA, this);
    set(m_handle, CURLOPT_HEADERFUNCTION, hear);
    set(m_handle, CURLOPT_HEADERDATA, this);
    set(m_handle, CURLOPT_PREREQFUNCTION, begin);
    set(m_handle, CURLOPT_PREREQDATA, this);
    set(m_handle, CURLOPT_WRITEFUNCTION, write);
    set(m_handle, CURLOPT_WRITEDATA, this);
}

void Transfer::visit(const std::string& url) { set(m_handle, CURLOPT_URL, url.c_str()); }

void Transfer::withoutData()
{
    m_hasData = false;
    set(m_handle, CURLOPT_NOBODY, 1L);
}

void Transfer::after(const std::vector<std::string>& commands)
{
    if (m_hasData || m_access.target().isSsh()) {
        m_after = listOf(commands);
    } else if (commands.empty()) {
        sendFirst("*NOOP");
    } else {
        sendFirst(commands.front());
        m_after = listOf({commands.begin() + 1, commands.end()});
    }
    if (m_first) {
        set(m_handle, CURLOPT_PREQUOTE, m_first.get());
    }
    if (m_after || !m_first) {
        set(m_handle, CURLOPT_POSTQUOTE, m_after.get());
    }
}

// On a kept connection libcurl 7.88 must have something to send at once: otherwise it reads what the server sends
// unasked, and uses memory of the transfer before, which it has freed. A refusal at this point would cost the
// connection, so that libcurl is told to ignore it.
void Transfer::sendFirst(const std::string& command)
{
    const bool mayFail = command.front() == '*';
    m_first = listOf({mayFail ? command : "*" + command});
    m_firstMustSucceed = mayFail ? "" : command;
}

void Transfer::receive(const DataSink& sink)
{
    m_sink = sink;
    setPace(m_access.options().receiveRate);
}

void Transfer::setPace(std::uint64_t rate)
{
    if (rate > 0) {
        m_pace.emplace(rate);
    }
}

void Transfer::requireEnd()
{
    if (m_access.target().isSsh()) {
        return;
    }
    m_requiresEnd = true;
    set(m_handle, CURLOPT_SSL_CTX_FUNCTION, secure);
    set(m_handle, CURLOPT_SSL_CTX_DATA, this);
}

void Transfer::send(const DataSource& source, std::int64_t size) { sendFrom(AnnouncedSource(source, size), size); }

// libcurl seeks by itself, with CURLOPT_SEEKFUNCTION; without it, it would append the file's beginning.
void Transfer::send(const LeavingFile& file, std::int64_t offset)
{
    if (!file.seek(offset)) {
        throw refusal(CURLE_READ_ERROR, "the local file has no byte " + std::to_string(offset));
    }
    const auto read = [&file](char* bytes, std::size_t count) { return file.read(bytes, count); };
    sendFrom(AnnouncedSource(read, file.size(), offset), file.size());
    set(m_handle, CURLOPT_SEEKFUNCTION, seek);
    set(m_handle, CURLOPT_SEEKDATA, static_cast<const void*>(&file));
    receiveFrom(offset);
}

void Transfer::sendFrom(AnnouncedSource source, std::int64_t size)
{
    m_source = std::move(source);
    setPace(m_access.options().sendRate);
    set(m_handle, CURLOPT_UPLOAD, 1L);
    set(m_handle, CURLOPT_READFUNCTION, read);
    set(m_handle, CURLOPT_READDATA, this);
    set(m_handle, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(size));
    if (size == 0) {
        m_source.requireEnd(); // libcurl 8.14 asks for no byte
    }
}

void Transfer::receiveFrom(std::int64_t offset)
{
    set(m_handle, CURLOPT_RESUME_FROM_LARGE, static_cast<curl_off_t>(offset));
}

void Transfer::run()
{
    if (const CURLcode code = tryToRun()) {
        throw failure(code);
    }
}

CURLcode Transfer::tryToRun()
{
    // libcurl drops a kept connection that brings no byte (an empty file over SSH) and tries a new one; 8.14 cannot.
    CURLcode code = m_connection.run(m_call);
    if (code == CURLE_TOO_MANY_REDIRECTS) {
        code = m_connection.run(m_call);
    }
    // The verdict's reason is taken first, because it depends on what is awaited.
    m_reason = m_call.verdict() == CURLE_OK ? "" : m_call.reason();
    m_call.await(Call::Awaited::Nothing);
    if (code != CURLE_OK && code != CURLE_QUOTE_ERROR && replies().openData()) {
        // A broken TLS data connection invalidates the session that the server expects on the next one. Before a
        // command is refused, all data has arrived.
        m_connection.giveUp();
    }
    if (code == CURLE_OK) {
        judgeEnd();
        judgeLast();
    }
    if (isOutOfStep(code)) {
        m_connection.cut();
    }
    if (m_call.hasThrown()) {
        m_connection.giveUp();
        m_call.rethrow();
    }
    // After a later command that is refused, no other is sent.
    const bool isFirst = code == CURLE_OK || (code == CURLE_QUOTE_ERROR && !m_isRefusalLast);
    if (isFirst && !m_refusal.empty() && !m_firstMustSucceed.empty()) {
        m_foundCode = CURLE_QUOTE_ERROR;
        m_found = "QUOT string not accepted: " + m_firstMustSucceed; // as libcurl says it of the later commands
    }
    return m_foundCode != CURLE_OK ? m_foundCode : code;
}

Failure Transfer::failure(CURLcode code) const
{
    std::string text = curl_easy_strerror(code);
    const auto add = [&text](const std::string& more) {
        if (!more.empty() && more != text) {
            text += ": " + more;
        }
    };
    if (!m_found.empty()) {
        add(m_found);
    } else if (!m_access.hostKeyRefusal().empty()) {
        add(m_access.hostKeyRefusal());
    } else if (!m_reason.empty()) {
        add(m_reason);
    } else if (!m_connection.missedSocket().empty()) {
        add(m_connection.missedSocket());
    } else if (code == CURLE_SSH && m_hasAsked && m_connection.detail().empty()) {
        add("the server takes no more bytes: its disk may be full, or the connection lost");
    } else {
        add(shown(m_connection.detail(), m_access.request().password));
    }
    const std::string& reply = m_refusal.empty() ? m_connection.replies().last() : m_refusal;
    if (!reply.empty()) {
        // Its code, by which callers go, is no password, though a password may look like it.
        constexpr std::size_t kCode = 3;
        text += " (the server's last reply: " + reply.substr(0, kCode) +
                shown(std::string_view(reply).substr(kCode), m_access.request().password) + ")";
    }
    return {asReported(code), text};
}

size_t Transfer::write(char* bytes, size_t /*one*/, size_t count, void* self) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        return transfer.take(bytes, count);
    } catch (...) {
        transfer.m_call.keepException();
        return 0;
    }
}

size_t Transfer::take(const char* bytes, size_t count)
{
    if (!m_sink) {
        return count; // the contents of a URL that is only visited
    }
    if (!m_sink(bytes, count)) {
        if (m_found.empty()) {
            m_found = "the receiver of the bytes refused them";
        }
        return 0;
    }
    m_call.moved(count);
    return keepsPace(count) ? count : 0;
}

// Waits until as many more bytes may move; false if the call must end before.
bool Transfer::keepsPace(size_t count)
{
    if (!m_pace) {
        return true;
    }
    m_call.sawSign(); // the time that a source or sink takes is not the server's
    m_connection.rest(m_call, m_pace->after(count));
    return m_call.verdict() == CURLE_OK;
}

size_t Transfer::read(char* bytes, size_t /*one*/, size_t count, void* self) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        return transfer.give(bytes, count);
    } catch (...) {
        transfer.m_call.keepException();
        return CURL_READFUNC_ABORT;
    }
}

size_t Transfer::give(char* bytes, size_t count)
{
    m_hasAsked = true;
    m_call.moved(0); // from now on nothing is repeated: the source's bytes cannot be read twice
    const size_t given = m_source.give(bytes, m_pace ? m_pace->most(count) : count);
    if (!keepsPace(given)) {
        return CURL_READFUNC_ABORT;
    }
    m_call.moved(given);
    if (m_source.isAtEnd()) {
        m_call.finishing();
    }
    return given;
}

size_t Transfer::hear(char* bytes, size_t one, size_t count, void* self) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        transfer.m_call.sawSign();
        if (transfer.m_connection.hear({bytes, one * count})) {
            transfer.judgeReply();
        }
        if (transfer.m_foundCode == CURLE_OK) {
            return count;
        }
    } catch (...) {
        transfer.m_call.keepException();
    }
    // If libcurl 7.88 read another reply after one that was refused here, it would use memory that it has freed.
    transfer.m_connection.cut();
    return 0;
}

void Transfer::judgeReply()
{
    const int code = replies().lastCode();
    m_isRefusalLast = false;
    // The first over a kept connection, and older than the command or about data: each reply would be that to the
    // command before.
    const bool isFirst = m_isReached && replies().count() == 1;
    if (isFirst && (m_connection.hasReadNothing() || (!m_hasData && code / 10 == 22))) {
        m_connection.wasToldUnasked = true;
        m_foundCode = CURLE_WEIRD_SERVER_REPLY;
        m_found = "the server sent a reply unasked";
    }
    if (m_isReached && !m_hasData && code >= 400 && m_refusal.empty()) {
        m_isRefusalLast = true;
        m_refusal = replies().last();
    }
    if (m_call.awaited() != Call::Awaited::Nothing) {
        m_call.await(Replies::opensData(code) ? Call::Awaited::Bytes : Call::Awaited::Reply);
    }
    if (m_comparesSize && m_isStored) {
        m_comparesSize = false;
        judgeSize();
    }
    m_isStored = m_isStored || ((code == 226 || code == 250) && (m_hasAsked || replies().openData()));
}

// A server may lack SIZE (500, 502); any other reply without the number proves nothing.
void Transfer::judgeSize()
{
    const int code = replies().lastCode();
    const long long there = sizeInReply(replies().last());
    if (code == 500 || code == 502 || there == sent()) {
        return;
    }
    m_foundCode = CURLE_PARTIAL_FILE;
    m_found = there < 0 ? "the server does not report the size of what was sent" : sizesDiffer(there, sent());
}

// The data may have been cut off. As after any data connection that broke, the server may want another TLS session.
void Transfer::judgeEnd()
{
    if (!m_requiresEnd || !m_connection.dataEnd.isUnannounced()) {
        return;
    }
    const std::vector<std::string>& lines = replies().lines();
    const auto hasSize = [](const std::string& line) { return sizeInReply(line) >= 0; };
    curl_off_t size = -1;
    curl_easy_getinfo(m_handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    if (size > 0 || std::any_of(lines.begin(), lines.end(), hasSize)) {
        return; // libcurl has compared
    }
    m_foundCode = CURLE_RECV_ERROR;
    m_found = "the server has neither reported a size nor announced the end of the data with close_notify";
    m_connection.giveUp();
}

// libcurl takes any reply below 400 for success. One that announces another is none: that other would be the next
// command's.
void Transfer::judgeLast()
{
    if ((m_after || !m_firstMustSucceed.empty()) && m_foundCode == CURLE_OK && replies().isLastPreliminary()) {
        m_foundCode = CURLE_WEIRD_SERVER_REPLY;
        m_found = "the server's last reply neither confirms nor refuses the command";
        m_connection.cut();
    }
}

// CURLOPT_SSL_CTX_FUNCTION. After the login, the only TLS connection to be made is the one for the data.
CURLcode Transfer::secure(CURL* /*handle*/, void* context, void* self) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    if (transfer.m_isReached) {
        transfer.m_connection.dataEnd.watch(static_cast<SSL_CTX*>(context));
    }
    return transfer.m_access.secure(context);
}

int Transfer::seek(void* file, curl_off_t offset, int origin) noexcept
{
    const bool found = origin == SEEK_SET && static_cast<const LeavingFile*>(file)->seek(offset);
    return found ? CURL_SEEKFUNC_OK : CURL_SEEKFUNC_FAIL;
}

// CURLOPT_PREREQFUNCTION: called once logged in.
int Transfer::begin(void* self, char* /*theirs*/, char* /*ours*/, int /*theirPort*/, int /*ourPort*/) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    transfer.m_isReached = true;
    transfer.m_call.await(Call::Awaited::Reply);
    return CURL_PREREQFUNC_OK;
}

void Transfer::watch(std::int64_t moved, std::int64_t all)
{
    if (moved != m_moved) {
        m_moved = moved;
        m_call.await(moved == all ? Call::Awaited::Reply : Call::Awaited::Bytes);
    }
}

int Transfer::progress(void* self, curl_off_t toReceive, curl_off_t received, curl_off_t toSend,
                       curl_off_t sent) noexcept
{
    auto& transfer = *static_cast<Transfer*>(self);
    try {
        if (transfer.m_sink && toReceive > 0) {
            transfer.m_call.learnTotal(toReceive);
        }
        transfer.watch(received + sent, toReceive + toSend);
        transfer.m_call.report();
    } catch (...) {
        transfer.m_call.keepException();
    }
    if (transfer.m_call.verdict() == CURLE_OK) {
        return 0;
    }
    // Otherwise libcurl sends QUIT and waits for the reply.
    transfer.m_connection.cut();
    return 1;
}

} // namespace session
