#include "SessionContract.h"

#include "RecordedDisk.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr std::size_t kChance = 12;

// A temporary name has twelve digits by chance.
std::string withoutChance(std::string line)
{
    for (std::string::size_type end = line.find('.'); end != std::string::npos; end = line.find('.', end + 1)) {
        const bool isChance = end > kChance && line.find_first_not_of("0123456789ABCDEFabcdef", end - kChance) == end;
        if (isChance) {
            line.replace(end - kChance, kChance, kChance, 'X');
        }
    }
    return line;
}

bool namesDirectory(const std::string& url)
{
    const std::string end = "/a.bak/";
    return url.size() > end.size() && url.compare(url.size() - end.size(), end.size(), end) == 0;
}

// The header callback did not take a line, which ends a transfer.
struct Unheard
{
};

void say(const scripted::Handle& handle, const std::string& line)
{
    if (handle.hear(line + "\r\n") != line.size() + 2) {
        throw Unheard();
    }
}

} // namespace

SessionContract::SessionContract()
{
    recorded::disk() = {};
    scripted::curl().connects = true;
    scripted::curl().time = 1000;
    request.remotePath = "ftp://server:2121/backup/a.bak";
    request.port = 0;
    request.caCert.clear();
    toldChecksum = "213 SHA-256 0-7 " + std::string(64, 'A') + " a.bak";
    errorText.reserve(4096); // not from the memory that is watched
    writeFile(request.localPath, "seventeen bytes.\n");
    scripted::curl().perform = [this](scripted::Handle& handle) {
        const memory::Pause pause;
        try {
            return serve(handle);
        } catch (const Unheard&) {
            return CURLE_WRITE_ERROR;
        }
    };
}

Lines SessionContract::journalOfSession(const Piece& piece)
{
    scripted::curl().multisMade = 0;
    unsigned left = 0;
    Lines lines = journalOf([&] {
        {
            SFtpSession session(options);
            piece(session);
        }
        left = memory::livingBlocks();
    });
    EXPECT_EQ(0U, left) << "blocks that nobody freed";
    for (std::string& line : lines) {
        // The session makes no copy of the password, not even for a moment.
        EXPECT_NE("PASSWORD FREED", line);
        EXPECT_NE("credentials joined", line);
        line = withoutChance(std::move(line));
    }
    return lines;
}

Lines SessionContract::journalOfCall(const Call& call, int expected)
{
    return journalOfSession([&](SFtpSession& session) {
        const int result = call(session, request, errorText);
        const memory::Pause pause;
        EXPECT_EQ(nameOf(expected), nameOf(result)) << errorText;
    });
}

// An SSH server shows its key first.
bool SessionContract::isKnown(const scripted::Handle& handle) const
{
    using Judge = int (*)(CURL*, const curl_khkey*, const curl_khkey*, curl_khmatch, void*);
    const auto judge = reinterpret_cast<Judge>(handle.pointer(CURLOPT_SSH_KEYFUNCTION));
    const curl_khkey found = {"key", 3, CURLKHTYPE_ED25519};
    const memory::Resumption session;
    return judge == nullptr ||
           judge(nullptr, nullptr, &found, CURLKHMATCH_OK, handle.pointer(CURLOPT_SSH_KEYDATA)) == CURLKHSTAT_FINE;
}

CURLcode SessionContract::serve(const scripted::Handle& handle)
{
    if (!isKnown(handle)) {
        return CURLE_PEER_FAILED_VERIFICATION;
    }
    say(handle, "220 ready");
    EXPECT_EQ(CURL_PREREQFUNC_OK, handle.loggedIn());
    if (targetIsFile && namesDirectory(scripted::curl().url)) {
        return CURLE_REMOTE_ACCESS_DENIED;
    }
    if (!handle.isOn(CURLOPT_NOBODY)) {
        if (const CURLcode code = moveFile(handle)) {
            return code;
        }
    }
    for (const CURLoption when : {CURLOPT_PREQUOTE, CURLOPT_POSTQUOTE}) {
        for (auto* each = static_cast<curl_slist*>(handle.pointer(when)); each != nullptr; each = each->next) {
            if (const CURLcode code = command(handle, each->data)) {
                return code;
            }
        }
    }
    return CURLE_OK;
}

CURLcode SessionContract::moveFile(const scripted::Handle& handle)
{
    say(handle, "150 data follows");
    if (handle.isOn(CURLOPT_UPLOAD)) {
        uploaded.clear();
        std::string piece;
        do {
            if (handle.send(piece, 8) == CURL_READFUNC_ABORT) {
                return CURLE_ABORTED_BY_CALLBACK;
            }
            uploaded += piece;
        } while (!piece.empty());
        scripted::curl().size =
            toldSize.empty() ? static_cast<curl_off_t>(uploaded.size()) : std::atoll(toldSize.c_str());
    } else if (handle.receive(content) != content.size()) {
        return CURLE_WRITE_ERROR;
    }
    say(handle, "226 done");
    return CURLE_OK;
}

CURLcode SessionContract::command(const scripted::Handle& handle, const std::string& text)
{
    const bool mayFail = text[0] == '*';
    const std::string whole = text.substr(mayFail ? 1 : 0);
    const std::string verb = whole.substr(0, whole.find(' '));
    const auto found = refused.find(verb);
    if (found != refused.end()) {
        say(handle, refusal);
        return mayFail && found->second == CURLE_QUOTE_ERROR ? CURLE_OK : found->second;
    }
    if (verb == "FEAT") {
        say(handle, "211-Features");
        for (const std::string& each : features) {
            say(handle, " " + each);
        }
        say(handle, "211 End");
        return CURLE_OK;
    }
    if (verb == "MLST") {
        say(handle, "250-Listing");
        say(handle, " type=file;size=11;modify=20260102030405; " + whole.substr(5));
        say(handle, "250 End");
        return CURLE_OK;
    }
    if (verb == "HASH" || verb == "XSHA256" || verb == "XCRC") {
        say(handle, toldChecksum);
        return CURLE_OK;
    }
    const std::string reply = verb == "MDTM" ? "213 20260102030405"
                              : verb == "SIZE"
                                  ? "213 " + (toldSize.empty() ? std::to_string(uploaded.size()) : toldSize)
                                  : "250 done";
    say(handle, reply);
    return CURLE_OK;
}

Lines connectionMade() { return {"handle 1 made", "multi 1 made", "multi 1 MAXCONNECTS = 1"}; }

Lines connectionClosed() { return {"multi 1 cleaned up", "handle 1 cleaned up"}; }

namespace {

Lines afterTheReset(const std::string& scheme)
{
    return {
        "1 reset",
        "1 OPENSOCKETFUNCTION = unknown function",
        "1 OPENSOCKETDATA = unknown",
        "1 CLOSESOCKETFUNCTION = unknown function",
        "1 CLOSESOCKETDATA = unknown",
        "1 ERRORBUFFER = unknown",
        "1 NOSIGNAL = 1",
        "1 QUICK_EXIT = 1",
        "1 TCP_KEEPALIVE = 1",
        "1 PROTOCOLS_STR = " + scheme,
        "1 PATH_AS_IS = 1",
        "1 USERNAME = operator",
        "1 PASSWORD = correct horse battery",
        "1 PROXY = ",
        "1 NOPROXY = ",
        "1 HTTPPROXYTUNNEL = 1",
        "1 SUPPRESS_CONNECT_HEADERS = 1",
        "1 FTP_SKIP_PASV_IP = 1",
        "1 FTP_FILEMETHOD = 3",
        "1 CONNECTTIMEOUT_MS = 20000",
        "1 FTP_RESPONSE_TIMEOUT = 61",
        "1 MAXAGE_CONN = 2147483",
    };
}

Lines overSsh()
{
    return {"1 UPLOAD_BUFFERSIZE = 524288", "1 BUFFERSIZE = 524288", "1 SSH_AUTH_TYPES = 10",
            "1 SSH_HOSTKEYFUNCTION = unknown function", "1 SSH_HOSTKEYDATA = unknown"};
}

// Before the login (FTPSSLAUTH), for everything (USE_SSL 3), TLS 1.2 alone, the chain and the host's name compared, the
// machine's trust store.
Lines overTls()
{
    return {"1 SSLVERSION = 393222", "1 USE_SSL = 3",        "1 FTPSSLAUTH = 2",
            "1 SSL_VERIFYPEER = 1",  "1 SSL_VERIFYHOST = 2", "1 CAINFO = null"};
}

} // namespace

Lines setUp(const std::string& scheme)
{
    return afterTheReset(scheme) + (scheme == "sftp" ? overSsh() : overTls()) +
           Lines{"1 NOPROGRESS = 0",         "1 XFERINFOFUNCTION = unknown function",
                 "1 XFERINFODATA = unknown", "1 HEADERFUNCTION = unknown function",
                 "1 HEADERDATA = unknown",   "1 PREREQFUNCTION = unknown function",
                 "1 PREREQDATA = unknown",   "1 WRITEFUNCTION = unknown function",
                 "1 WRITEDATA = unknown"};
}

Lines transferOf(const Lines& setUp, const Lines& told, int code)
{
    const auto lists = std::count_if(told.begin(), told.end(),
                                     [](const std::string& line) { return line.rfind("list of its own", 0) == 0; });
    return setUp + told +
           Lines{"multi 1 takes 1", "multi 1 perform", "multi 1 tells " + std::to_string(code),
                 "multi 1 gives 1 back"} +
           Lines(static_cast<std::size_t>(lists), "list freed");
}

std::string endOf(const std::string& function, const SFtpRequest& request)
{
    return "log 2 SFtpSession 77 SFtpSession::" + function + "(): 0|" + request.remotePath + ": end";
}

std::string failureOf(const std::string& function, const SFtpRequest& request, int code, const std::string& text)
{
    return "log 4 SFtpSession 77 SFtpSession::" + function + "(): 0|" + request.remotePath + ": " +
           std::to_string(code) + " " + text;
}

std::string exceptionOf(const std::string& function, const SFtpRequest& request)
{
    return "log 4 SFtpSession 77 SFtpSession::" + function + "(): 0|" + request.remotePath + ": ended by an exception";
}

namespace {

Lines::iterator placeOf(Lines& lines, const std::string& option)
{
    const std::string begin = "1 " + option + " = ";
    const auto found = std::find_if(lines.begin(), lines.end(), [&begin](const std::string& line) {
        return line.compare(0, begin.size(), begin) == 0;
    });
    EXPECT_TRUE(found != lines.end()) << option;
    return found;
}

} // namespace

Lines withOption(Lines lines, const std::string& option, const std::string& value)
{
    *placeOf(lines, option) = "1 " + option + " = " + value;
    return lines;
}

Lines withBehind(Lines lines, const std::string& option, const Lines& more)
{
    lines.insert(placeOf(lines, option) + 1, more.begin(), more.end());
    return lines;
}
