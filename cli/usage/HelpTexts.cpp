#include "usage/HelpTexts.h"

#include <curl/curl.h>

namespace {

constexpr char kNotes[] =
    "Examples:\n"
    "  sftpclient test ftps://backup@host/ --ca ca.pem\n"
    "  sftpclient get ftps://backup@host/weekly/sunday.bak --ca ca.pem\n"
    "  sftpclient get --help\n"
    "\n"
    "Login: the user comes from the URL (ftps://user@host/) or --user, else from the netrc file; the password\n"
    "from --password-file or --password-stdin, else from the environment variable SFTPCLIENT_PASSWORD, else\n"
    "from the netrc file, else from a prompt at the terminal; never from the command line.\n"
    "\n"
    "Settings: each option can also be set in the environment (SFTPCLIENT_PORT for --port) and in section\n"
    "[sftpclient] of the configuration file (port=2121). The command line overrides the environment, and the\n"
    "environment overrides the file.\n"
    "\n"
    "Output: standard output carries only what was requested: the names of ls, and with --json the result.\n"
    "Everything else goes to standard error, the result last, as one line \"OPERATION: CODE TEXT\", for example\n"
    "\"get: 67 Login denied\". CODE is libcurl's, or with --as-host -1 where the library could not run it.\n"
    "\n"
    "Exit status: 0 for result 0, libcurl's code for any other, 255 for -1 and for a failure of the command\n"
    "itself, 2 for wrong usage (and for libcurl's 2), 128 and the signal's number after an interruption; doctor\n"
    "has its own.\n"
    "\n"
    "The manual page sftpclient(1) tells more.";

constexpr char kTrust[] =
    "\n--ca names a file with CA certificates, several as PEM or one as DER, that alone are trusted; without it\n"
    "the machine's own are. With none the server is not verified, if the configuration file has\n"
    "CertAuthSwitch=0 in section [General]; else the result is 77. A file named none is ./none. An SSH server's\n"
    "key must be in ~/.ssh/known_hosts, or given with --fingerprint.\n";

constexpr char kAsHost[] =
    "\n--as-host runs the operation as a host with SFtpClient does, with its limits: take it to find out why such\n"
    "a host fails. --ca then is for one certificate and trusted besides the machine's own, and must be given\n"
    "for ftp: and ftps: URLs; put does not use it. With an ftp: URL, put and the size check of get send the\n"
    "login in the clear. mv and rm need a server that knows \"rename OLD NEW\" and \"rm PATH\", or an sftp: URL.\n";

constexpr char kTrustOfDoctor[] =
    "\n--ca names a file with one CA certificate, PEM or DER, that is trusted besides the machine's own. With\n"
    "none the server is not verified, if the configuration file has CertAuthSwitch=0 in section [General];\n"
    "else the result is 77. A file named none is ./none.\n"
    "For ftp: and ftps: URLs one of the two must be given. A session expects an SSH server's key as it is in\n"
    "~/.ssh/known_hosts, or as --fingerprint says.\n";

constexpr char kDoctor[] =
    "\nThe report tells what will work and what to change where something will not. Without --write nothing is\n"
    "changed on the server, and what only writing shows is assumed to work.\n"
    "\n"
    "The password is sent over TLS to a server that the library trusts, and to nobody else, unless\n"
    "--clear-login says so. With an ftp: URL, put and the size check of get send it in the clear: without\n"
    "--clear-login only the user's name is sent that way, and where the server then asks for the password, the\n"
    "two remain unknown.\n"
    "\n"
    "The report goes to standard output. Exit status: 0 when all operations will work, 1 when one will fail, 3\n"
    "when none will fail but one is unknown, 2 for wrong usage, 255 for a failure of the command itself.\n";

constexpr char kTrees[] =
    "\nFiles that differ in size or time are moved, over several connections; each has its name only once it is\n"
    "whole, so an interrupted run is simply repeated. Links are told and left out. The last line counts what was\n"
    "done; the exit status is 0, or the code of the first failure. docs/trees.md tells more.\n"
    "\n"
    "A PATTERN of --exclude is a shell's: without \"/\" for names (*.tmp), with one for paths from the top (/cache,\n"
    "docs/*.html), with one at its end for directories (node_modules/).\n";

} // namespace

std::string generalNotes() { return kNotes; }

std::string notesOf(const Command& command)
{
    const std::string examples = std::string("Examples:\n") + command.examples;
    const bool isDoctor = command.operation == Operation::Doctor;
    const std::string notes = isDoctor ? std::string(kTrustOfDoctor) + kDoctor
                                       : std::string(kTrust) + (isOfHost(command.operation) ? kAsHost : "") +
                                             (isTree(command.operation) ? kTrees : "");
    return examples + notes + "\nsftpclient --help tells where login and settings come from, and the exit status.";
}

std::string versionText()
{
    const curl_version_info_data* const libcurl = curl_version_info(CURLVERSION_NOW);
    std::string text = std::string("sftpclient ") + SFTPCLIENT_VERSION + "\nlibcurl/" + libcurl->version;
    for (const char* const library : {libcurl->ssl_version, libcurl->libssh_version}) {
        text += library == nullptr ? std::string() : std::string("\n") + library;
    }
    return text;
}
