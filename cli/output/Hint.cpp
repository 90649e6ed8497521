#include "output/Hint.h"

#include <algorithm>
#include <initializer_list>

namespace {

constexpr CURLcode kAnyResult = CURL_LAST;
constexpr int kAnyReply = 0;
constexpr int kRefusal = 400; // and above

enum class Ways
{
    All,
    AsHost,
    Session
};

struct Rule
{
    CURLcode result;
    int reply;
    const char* hint;
    Ways ways = Ways::All;
};

constexpr char kNoSpace[] = "the server has no space left for this user; free some there, or have the quota raised";

constexpr char kRefusedTransfer[] =
    "the server's last reply refuses the transfer itself: look there for the reason, not "
    "at ports or firewalls";
constexpr char kBrokenDataTls[] =
    "TLS on the data connection failed; --trace shows how, the certificate there among it";

// The first that fits counts.
constexpr Rule kRules[] = {
    {kAnyResult, 421, "the server ends the connection, or takes no more of them; try again later, or give --retry"},
    {kAnyResult, 452, kNoSpace},
    {kAnyResult, 552, kNoSpace},
    {CURLE_FAILED_INIT, kAnyReply, "there was no transfer; the log records above say why"},
    {CURLE_COULDNT_RESOLVE_HOST, kAnyReply, "the host in the URL is not known here; check its name"},
    {CURLE_COULDNT_CONNECT, kAnyReply, "no server answers there; check host, port and firewalls"},
    {CURLE_FTP_WEIRD_PASV_REPLY, kAnyReply,
     "the data connection failed; check that the server's passive ports are open"},
    {CURLE_PARTIAL_FILE, 426, "the server aborted the transfer; try again, or look at its log"},
    {CURLE_PARTIAL_FILE, kAnyReply, "the transfer ended early; the server's log, or --trace, says why"},
    {CURLE_FTP_COULDNT_RETR_FILE, kAnyReply,
     "the server refuses to send the file or the listing; its last reply says why"},
    {CURLE_QUOTE_ERROR, 500,
     "the server does not know the command; mv and rm need one that knows \"rename OLD NEW\" and \"rm PATH\", or an "
     "sftp: URL, or no --as-host",
     Ways::AsHost},
    {CURLE_QUOTE_ERROR, 502,
     "the server does not carry the command out; mv and rm need one that does, or an sftp: URL, or no --as-host",
     Ways::AsHost},
    {CURLE_QUOTE_ERROR, kAnyReply,
     "the server refused the command: look with ls at what is there, and at the directory's rights"},
    {CURLE_WRITE_ERROR, kAnyReply,
     "the local file could not be written; check the disk's space, and the permissions there"},
    {CURLE_UPLOAD_FAILED, 550,
     "the server refuses to write this file; check its name and the directory's rights there"},
    {CURLE_UPLOAD_FAILED, 553,
     "the server refuses to write this file; check its name and the directory's rights there"},
    {CURLE_UPLOAD_FAILED, kAnyReply, "the server refused the file; its last reply says why"},
    {CURLE_OPERATION_TIMEDOUT, kAnyReply,
     "the server did not answer in time; check the network, allow more time, or give --retry"},
    {CURLE_SSL_CONNECT_ERROR, kAnyReply,
     "the TLS handshake failed; use ftps: where the port speaks TLS from the start (990), ftp: where it does not (21)"},
    {CURLE_PEER_FAILED_VERIFICATION, kAnyReply,
     "the server's certificate is not trusted; give the CA that issued it with --ca, and for put and get, add it to "
     "the "
     "machine's trust store",
     Ways::AsHost},
    {CURLE_PEER_FAILED_VERIFICATION, kAnyReply,
     "the server's certificate is not trusted, or not for this host; give the CA that issued it with --ca",
     Ways::Session},
    {CURLE_USE_SSL_FAILED, kAnyReply, "the server offers no TLS on this port; try ftps:, or enable TLS there",
     Ways::AsHost},
    {CURLE_USE_SSL_FAILED, kAnyReply,
     "the server offers no TLS on this port; try ftps:, or enable TLS there, or let the login go in the clear with "
     "--clear-login",
     Ways::Session},
    {CURLE_LOGIN_DENIED, kAnyReply,
     "check user and password; a server that demands TLS also refuses put and get with an ftp: URL, then use ftps:",
     Ways::AsHost},
    {CURLE_LOGIN_DENIED, kAnyReply, "check user and password", Ways::Session},
    {CURLE_SSL_CACERT_BADFILE, kAnyReply,
     "check that --ca is a PEM or DER file and that ca-certificates is installed; --ca none needs CertAuthSwitch=0 in "
     "the configuration file"},
    {CURLE_REMOTE_FILE_NOT_FOUND, kAnyReply,
     "there is no such path for this user; list the directory above it with ls"},
};

// libcurl takes the answer to a transfer for one to EPSV or PASV when the data connection's TLS fails before it has
// read that answer.
bool answersTransfer(const Reply& reply)
{
    const auto commands = {"STOR", "APPE", "RETR", "NLST", "LIST"};
    return std::find(commands.begin(), commands.end(), reply.command) != commands.end();
}

} // namespace

std::string hintFor(Way way, CURLcode result, const Reply& reply)
{
    if (result == CURLE_OK || (way == Way::SshSession && result == CURLE_PEER_FAILED_VERIFICATION)) {
        return {};
    }
    const Ways other = way == Way::AsHost ? Ways::Session : Ways::AsHost;
    const auto* const rule = std::find_if(std::begin(kRules), std::end(kRules), [&](const Rule& each) {
        return each.ways != other && (each.result == kAnyResult || each.result == result) &&
               (each.reply == kAnyReply || each.reply == reply.code);
    });
    if (result == CURLE_FTP_WEIRD_PASV_REPLY && rule->result == result && answersTransfer(reply)) {
        return reply.code >= kRefusal ? kRefusedTransfer : kBrokenDataTls;
    }
    return rule == std::end(kRules) ? std::string() : rule->hint;
}
