#ifndef SFTPCLIENT_TLS_TLSTRUST_H
#define SFTPCLIENT_TLS_TLSTRUST_H

#include <SecuritySS.h>

#include <curl/curl.h>
#include <openssl/x509.h>

#include <string>

// What includes this header is built with libcurl's and OpenSSL's headers, and linked with OpenSSL where it frees a
// certificate.

/// Sets the TLS options of a transfer: TLS required on the control and the data connection, the server's chain
/// verified against libcurl's trust store and `cert` (one certificate, PEM or DER). For the exact text "none" the
/// host's configuration may switch the verification off. The host name is never compared.
///
/// REQUIRES: `cert` stays alive and unchanged until the transfer on `curl` is over; libcurl keeps its address.
__attribute__((visibility("default"))) void sftpSetCertTmp(CURL* curl, const std::string& cert);

/// CURLOPT_SSL_CTX_FUNCTION: makes the certificate text at `parm` (a `const std::string*`) a trust anchor of the
/// OpenSSL context `sslctx` (an `SSL_CTX*`). Called once for each TLS connection, on the thread that performs.
/// Returns 0, 77 when the text holds no certificate or memory does not suffice to read it, or 2 when the context does
/// not take it or something derived from `std::exception` was thrown, by the host's log for one. OpenSSL's errors stay
/// in the thread's queue.
__attribute__((visibility("default"))) CURLcode sftp_sslCtx_function(CURL* curl, void* sslctx, void* parm);

/// Reads the first certificate of `certText`, as PEM or else as DER. On success the caller owns `cert`; on failure
/// the result is SECURITYSS_FAILURE and `cert` holds no certificate (untouched where memory ran out before reading).
/// OpenSSL's errors stay in the thread's queue.
__attribute__((visibility("default"))) SecuritySS_RC sftpConvToX509(const std::string& certText, X509*& cert);

#endif
