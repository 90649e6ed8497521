#include "doctor/Access.h"

#include <ConfigReader.h>

#include <curl/curl.h>
#include <openssl/err.h>
#include <tls/TlsTrust.h>

#include <memory>
#include <stdexcept>

namespace doctor {

namespace {

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

std::string Access::rootUrl() const
{
    const std::string& url = request.remotePath;
    return url.substr(0, url.find('/', url.find("://") + 3)) + "/";
}

X509Certificate readCertificate(const std::string& text)
{
    X509* certificate = nullptr;
    static_cast<void>(sftpConvToX509(text, certificate));
    // An error that is left would be taken for one of the next call.
    ERR_clear_error();
    return X509Certificate(certificate);
}

} // namespace doctor
