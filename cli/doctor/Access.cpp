#include "doctor/Access.h"

#include <ConfigReader.h>

#include <curl/curl.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include <memory>
#include <stdexcept>

namespace doctor {

namespace {

MemoryBio readFrom(const std::string& text)
{
    return MemoryBio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

/// A URL in the parts that libcurl sees in it.
class Url
{
public:
    explicit Url(const std::string& text) : m_url(curl_url(), curl_url_cleanup)
    {
        if (!m_url || curl_url_set(m_url.get(), CURLUPART_URL, text.c_str(), CURLU_PATH_AS_IS) != CURLUE_OK) {
            throw std::runtime_error("libcurl cannot read the URL.");
        }
    }

    std::string part(CURLUPart which) const
    {
        char* text = nullptr;
        if (curl_url_get(m_url.get(), which, &text, CURLU_URLDECODE) != CURLUE_OK) {
            return {};
        }
        const std::unique_ptr<char, decltype(&curl_free)> owner(text, curl_free);
        return text;
    }

private:
    std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> m_url;
};

Scheme schemeOf(const std::string& scheme)
{
    if (scheme == "ftps") {
        return Scheme::Ftps;
    }
    return scheme == "sftp" ? Scheme::Sftp : Scheme::Ftp;
}

std::string withoutBrackets(const std::string& host)
{
    return !host.empty() && host.front() == '[' ? host.substr(1, host.size() - 2) : host;
}

Trust trustOf(const std::string& caCert, Scheme scheme)
{
    if (scheme == Scheme::Sftp) {
        return Trust::NotGiven;
    }
    if (caCert == "none") {
        return ConfigReader::getInt("General", "CertAuthSwitch", true) == 0 ? Trust::Nobody : Trust::NobodyRefused;
    }
    return readCertificate(caCert) != nullptr ? Trust::Certificate : Trust::Unreadable;
}

} // namespace

Access::Access(const SFtpRequest& from, std::chrono::milliseconds time)
    : request(from), limit(time), mask(from.userName, from.password),
      scheme(schemeOf(Url(from.remotePath).part(CURLUPART_SCHEME))),
      host(withoutBrackets(Url(from.remotePath).part(CURLUPART_HOST))), path(Url(from.remotePath).part(CURLUPART_PATH)),
      trust(trustOf(from.caCert, scheme))
{
}

X509Certificate readCertificate(const std::string& text)
{
    X509Certificate certificate(PEM_read_bio_X509(readFrom(text).get(), nullptr, nullptr, nullptr));
    if (!certificate) {
        certificate.reset(d2i_X509_bio(readFrom(text).get(), nullptr));
    }
    // An error that is left would be taken for one of the next call.
    ERR_clear_error();
    return certificate;
}

} // namespace doctor
