#ifndef SFTPCLIENT_CLI_DOCTOR_ACCESS_H
#define SFTPCLIENT_CLI_DOCTOR_ACCESS_H

#include "doctor/Report.h"
#include "output/PasswordMask.h"

#include <SFtpRequest.h>

#include <openssl/bio.h>
#include <openssl/x509.h>

#include <chrono>
#include <memory>
#include <new>
#include <string>

namespace doctor {

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};

using X509Certificate = std::unique_ptr<X509, Releaser<X509, X509_free>>;
using MemoryBio = std::unique_ptr<BIO, Releaser<BIO, BIO_free_all>>;

/// What `print` writes to the BIO that it gets.
template <typename Print>
std::string printed(Print print)
{
    const MemoryBio memory(BIO_new(BIO_s_mem()));
    if (!memory) {
        throw std::bad_alloc();
    }
    print(memory.get());
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

/// What every probe needs to know: the server, the login, and how long to wait.
struct Access
{
    /// Takes URL, port, login and CA from a request for a listing. `limit` is for connecting, and for each reply.
    /// REQUIRES: `request` outlives this object; its URL begins with ftp:, ftps: or sftp:.
    Access(const SFtpRequest& request, std::chrono::milliseconds limit);

    /// The URL of the login's own directory.
    std::string rootUrl() const;

    /// The server's name in a file of known hosts: "host", or "[host]:2222".
    std::string knownHostsName() const;

    const SFtpRequest& request;
    std::chrono::milliseconds limit;
    PasswordMask mask; ///< for what the server says
    Scheme scheme;
    std::string host; ///< without the brackets of an IPv6 address
    std::string path; ///< of the directory, decoded; for FTP, what follows the first "/" counts from the login's own
    Trust trust;
};

/// The first certificate in a PEM text, or the one whose DER form the text is; null where there is none.
X509Certificate readCertificate(const std::string& text);

} // namespace doctor

#endif
