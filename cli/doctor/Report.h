#ifndef SFTPCLIENT_CLI_DOCTOR_REPORT_H
#define SFTPCLIENT_CLI_DOCTOR_REPORT_H

#include "doctor/NameList.h"
#include "doctor/ServerText.h"

#include <curl/curl.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The facts that the probes bring home. They say what was seen, never what it means: `Predictions` does that.
///
/// Texts that a server has a hand in are `ServerText`s, which keep the password to themselves. Whoever shows them
/// escapes their control bytes.
namespace doctor {

/// What a probe, or a step of a round trip, did that a signal ended.
constexpr char kInterrupted[] = "was interrupted";

enum class Scheme
{
    Ftp,
    Ftps,
    Sftp
};

/// What the request's CA certificate amounts to.
enum class Trust
{
    Certificate, ///< one that can be read
    Unreadable,
    Nobody,        ///< "none", and the configuration allows it: the server is not verified
    NobodyRefused, ///< "none", and the configuration does not allow it
    NotGiven       ///< as for sftp: URLs, which need none
};

/// What a host would do that was started with the environment that this process was started with.
struct Proxy
{
    std::string variable;   ///< by which it would go through a proxy; empty: it would not
    bool getsLogin = false; ///< the proxy is told the login, and all goes to it in the clear
};

/// The libcurl that does the work.
struct Libcurl
{
    unsigned int number = 0; ///< as libcurl counts: 0x075801 is 7.88.1
    std::string version;
    std::string backEnds; ///< for TLS and SSH
    bool speaksScheme = true;
};

enum class Ending
{
    NotTried,
    Complete,
    Silent, ///< nothing came in time
    Closed, ///< the server hung up
    Garbled ///< something came that is no reply
};

/// What the server said to something.
struct Reply
{
    Ending ending = Ending::NotTried;
    int code = 0;
    ServerText text; ///< what follows the code in the last line; of what is no reply, its first line

    /// For a sentence: "220 ready".
    std::string shown() const;
    bool isPositive() const { return ending == Ending::Complete && code >= 200 && code < 400; }
};

/// The way to the server, up to its greeting.
struct Contact
{
    int code = 0;                       ///< libcurl's for finding the name and connecting
    std::vector<std::string> addresses; ///< the name's
    std::string address;                ///< the one that answered
    Reply greeting;
};

struct Certificate
{
    ServerText subject;
    ServerText issuer;
    ServerText serial;
    std::string notBefore;
    std::string notAfter;
};

/// An attempt to speak one version of TLS.
struct TlsVersion
{
    std::string name; ///< "TLS 1.3"
    Ending ending = Ending::NotTried;
    bool offered = false;
    std::string detail = {}; ///< the cipher suite, or why there was no TLS
};

struct Tls
{
    Reply auth; ///< to the request for TLS; not tried with implicit TLS
    std::array<TlsVersion, 4> versions = {{{"TLS 1.3"}, {"TLS 1.2"}, {"TLS 1.1"}, {"TLS 1.0"}}};
    std::vector<Certificate> chain; ///< the server's own first
    bool namesHost = false;
    ServerText anchor;    ///< the subject of the certificate by which a session trusts it
    long givenTrust = -1; ///< OpenSSL's verdict where the given CA alone is trusted; 0 is good, -1 not seen
    bool caFails = false; ///< libcurl cannot use the certificates to trust, so that no handshake began
};

struct HostKey
{
    std::string type;                         ///< "ssh-ed25519"
    std::string fingerprint;                  ///< "SHA256:..."; empty: none was seen
    std::string line;                         ///< of a file of known hosts
    curl_khmatch match = CURLKHMATCH_MISSING; ///< what libcurl finds in the session's file of known hosts
    int notCompared = 0; ///< libcurl's code where a session with that file gets to see no key, although there is one
    ServerText error;    ///< libcurl's words for it
};

/// One command in a transcript and what the server said to it.
struct Exchange
{
    std::string command; ///< empty for the greeting; for decisions only
    Reply reply;
};

/// One visit with libcurl, made as an operation of the library makes it.
struct ProbeResult
{
    bool made = false;
    bool connected = false;
    std::string address; ///< the one that answered, or that was tried last
    int code = 0;
    ServerText error;      ///< libcurl's words for a failure
    long verifyResult = 0; ///< OpenSSL's verdict on the certificate; 0 is good
    ServerText entryPath;  ///< the directory that the login led to
    NameList names;        ///< what a listing held
    std::vector<Exchange> transcript;

    bool succeeded() const { return made && code == 0; }
    /// The reply to the last command that begins with `beginning`, or null.
    const Reply* replyTo(const std::string& beginning) const;
    /// The last that is whole, or null.
    const Reply* lastReply() const;
    bool loggedIn() const;
};

/// What was seen over one control connection with a login, transfer after transfer.
struct Login
{
    ProbeResult test;     ///< as the connection test visits
    ProbeResult listing;  ///< as the listing visits
    ProbeResult root;     ///< the listing of the login's directory, where the one asked about is missing
    ProbeResult missing;  ///< of a file that is not there, where an SSH server does not let the directory be listed
    ProbeResult commands; ///< asked about SIZE, what a session needs, rename and rm
};

enum class Step
{
    Put,
    List,
    Get,
    Rename,
    Remove
};

/// What came of a step, if it was made.
struct StepResult
{
    std::optional<int> code; ///< libcurl's, or -1
    Reply said;              ///< where the server refused
    bool isGood = true;      ///< the listing named the file; what came back is what was sent

    bool succeeded() const { return code == 0; }
};

/// A full round trip with a file of its own, as the library makes it.
struct RoundTrip
{
    std::string name;                ///< the file's
    std::array<StepResult, 5> steps; ///< each at its place
    std::string notMade;             ///< why there was none, if so
    std::optional<Step> unfinished;  ///< a step that was begun, and has no result
    std::string failure;             ///< of that step, or of the trip, if it ended early: "did not finish in time"
    std::vector<std::string> leftBehind;
    bool leftUnknown = false; ///< whether something is left behind has not been found out

    StepResult& operator[](Step step) { return steps.at(static_cast<std::size_t>(step)); }
    const StepResult& operator[](Step step) const { return steps.at(static_cast<std::size_t>(step)); }
};

struct Report
{
    // The question.
    Scheme scheme = Scheme::Ftp;
    std::string url;
    std::string host;
    unsigned int port = 0;
    Trust trust = Trust::Certificate;
    bool clearLogin = false;      ///< the user agrees to a login without TLS
    std::string commandDirectory; ///< the directory that rename and delete name in their commands; empty: none can be
    Proxy proxy;
    std::string knownHostsFile; ///< that a session is given; empty: none
    std::string hostKeySha256;  ///< the fingerprint that a session is given; empty: none

    // The facts.
    Reply turnedAway; ///< the greeting of a probe that came after others that were welcome, before it was repeated
    Reply limit;      ///< what the server said to a second connection while one was open, where it turned that away
    std::string unfinishedLogin; ///< how the probe that logs in was ended, which was not to end by itself
    std::string unfinishedBare;  ///< the same without TLS
    int signal = 0;              ///< that ended the examination early
    Libcurl libcurl;
    Contact contact;
    Tls tls;
    HostKey hostKey;
    Login client;                         ///< as `SFtpClient` trusts servers
    Login session;                        ///< as `SFtpSession` does, where the other is not trusted
    Reply clearUser;                      ///< to the user's name alone, without TLS
    ProbeResult bare;                     ///< as the upload and the size check log in: without the library's TLS step
    ProbeResult bareAgain;                ///< the same in another way, where that one did not get as far as data
    ProbeResult bareCommands;             ///< asked about SIZE
    std::optional<RoundTrip> roundTrip;   ///< of `SFtpClient`; what is left behind counts for both
    std::optional<RoundTrip> sessionTrip; ///< of `SFtpSession`
};

} // namespace doctor

#endif
