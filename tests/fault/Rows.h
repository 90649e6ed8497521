#ifndef FAULT_ROWS_H
#define FAULT_ROWS_H

#include "Fault.h"

#include <curl/curl.h>
#include <openssl/ssl.h>

/// What the files of rows have in common: short names, reasons and scenes.
namespace rows {

constexpr Operation kConnect = Operation::Connect;
constexpr Operation kList = Operation::List;
constexpr Operation kDownload = Operation::Download;
constexpr Operation kChecked = Operation::Checked;
constexpr Operation kRename = Operation::Rename;
constexpr Operation kDelete = Operation::Delete;
constexpr Operation kUpload = Operation::Upload;

/// The library's own result: the size check has refused.
constexpr int kRefused = -1;
/// CURLE_TOO_LARGE, which the headers of older releases do not have.
constexpr int kTooLarge = 100;

// If a row is about more than a silence, no reply may come too late on a busy machine.
constexpr unsigned kAmple = 3;

// Reasons for more than one code.
constexpr const char* kReset = "The reset can overtake what was sent before it, even the taking of the connection.";
constexpr const char* kResetWithData =
    "The data connection breaks off in its handshake, which libcurl takes for a failed EPSV: "
    "it meets the reset as it sends PASV, or as it reads.";
constexpr const char* kGlued = "Read together with the 234, the text is a second reply, else a bad handshake.";
constexpr const char* kLongLine = "7.88.1 refuses so many header bytes; from 8.14 on libcurl refuses so long a line.";
constexpr const char* kEndless = "7.88.1 refuses so many header bytes; from 8.14 on it reads until the time-out.";
constexpr const char* kDataTls = "libcurl takes a failed handshake on the data connection for a failed EPSV and mostly "
                                 "reports that; how far it got is a race.";
constexpr const char* kUnannounced = "From 8.14 on libcurl asks for a close_notify at the end of the data.";

/// More than the minute that libcurl 8.14 gives a reply where the library sets no limit.
constexpr double kReplyLimit = 90;

inline void implicitTls(Scene& scene) { scene.server.tls = testserver::TlsMode::Implicit; }

inline void noTls(Scene& scene) { scene.server.tls = testserver::TlsMode::Plain; }

/// The stall ends by itself: the operation has no time-out.
inline void boundedStall(Scene& scene) { scene.server.stallLimit = std::chrono::milliseconds(300); }

/// Longer than the library's 20 seconds for connecting where they are hastened, so that they end the call.
inline void stallBeyondConnecting(Scene& scene) { scene.server.stallLimit = std::chrono::seconds(10); }

inline testserver::Certificate validFor(const testserver::CertificateAuthority& authority, int from, int to)
{
    testserver::CertificateOptions options;
    options.notBefore = std::chrono::hours(from);
    options.notAfter = std::chrono::hours(to);
    return authority.issue(options);
}

inline testserver::Certificate expired(const testserver::CertificateAuthority& authority)
{
    return validFor(authority, -48, -24);
}

inline testserver::Certificate notYetValid(const testserver::CertificateAuthority& authority)
{
    return validFor(authority, 24, 48);
}

inline testserver::Certificate ofAnotherHost(const testserver::CertificateAuthority& authority)
{
    testserver::CertificateOptions options;
    options.dnsNames = {"elsewhere.example"};
    options.addresses = {};
    return authority.issue(options);
}

inline testserver::Certificate ofAnotherCa() { return testserver::CertificateAuthority("Another CA").issue(); }

} // namespace rows

#endif
