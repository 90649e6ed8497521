#include "output/Hint.h"

#include <utility>

namespace {

constexpr std::pair<CURLcode, const char*> kHints[] = {
    {CURLE_FAILED_INIT, "there was no transfer; the log records above say why"},
    {CURLE_COULDNT_RESOLVE_HOST, "the host in the URL is not known here; check its name"},
    {CURLE_COULDNT_CONNECT, "nobody answers there; check host, port and firewalls"},
    {CURLE_FTP_WEIRD_PASV_REPLY, "no data connection came about; check that the server's passive ports are open, and "
                                 "with --trace, its certificate"},
    {CURLE_PARTIAL_FILE, "the transfer ended early; the server's log, or --trace, says why"},
    {CURLE_QUOTE_ERROR, "the server refused the command: look with ls whether the file is there; mv and rm need a "
                        "server that knows \"rename OLD NEW\" and \"rm PATH\", or an sftp: URL"},
    {CURLE_WRITE_ERROR, "the local file could not be written; check the disk's space"},
    {CURLE_UPLOAD_FAILED, "the server refused the file; check the directory's rights and space there"},
    {CURLE_OPERATION_TIMEDOUT, "the server did not answer in time, or has no place left (421); check the network, or "
                               "give --retry"},
    {CURLE_SSL_CONNECT_ERROR, "TLS did not come about; use ftps: where the port speaks TLS from the start (990), ftp: "
                              "where it does not (21)"},
    {CURLE_PEER_FAILED_VERIFICATION, "the server's certificate is not trusted; give the CA that issued it with --ca, "
                                     "and for put and get, add it to the machine's trust store"},
    {CURLE_USE_SSL_FAILED, "the server offers no TLS on this port; try ftps:, or have TLS switched on there"},
    {CURLE_LOGIN_DENIED, "check user and password; a server that demands TLS also refuses put and get with an ftp: "
                         "URL, then use ftps:"},
    {CURLE_SSL_CACERT_BADFILE, "check that --ca is a PEM or DER file and that ca-certificates is installed; --ca none "
                               "needs CertAuthSwitch=0 in the configuration file"},
    {CURLE_REMOTE_FILE_NOT_FOUND, "there is no such path for this user; list the directory above it with ls"},
};

} // namespace

std::string hintFor(CURLcode result)
{
    for (const auto& hint : kHints) {
        if (hint.first == result) {
            return hint.second;
        }
    }
    return {};
}
