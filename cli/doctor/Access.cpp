#include "doctor/Access.h"

#include "base/PercentCode.h"
#include "base/RemoteUrl.h"

#include <ConfigReader.h>

#include <openssl/err.h>
#include <tls/TlsTrust.h>

namespace doctor {

namespace {

Scheme schemeOf(const std::string& scheme)
{
    if (scheme == "ftps") {
        return Scheme::Ftps;
    }
    return scheme == "sftp" ? Scheme::Sftp : Scheme::Ftp;
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
      scheme(schemeOf(RemoteUrl(from.remotePath).scheme())), host(RemoteUrl(from.remotePath).host()),
      path(percentDecoded(from.remotePath.substr(rootUrl().size() - 1))), trust(trustOf(from.caCert, scheme))
{
}

std::string Access::rootUrl() const
{
    const std::string& url = request.remotePath;
    return url.substr(0, url.find('/', url.find("://") + 3)) + "/";
}

std::string Access::knownHostsName() const
{
    constexpr std::uint32_t kUsual = 22;
    return request.port == kUsual ? host : "[" + host + "]:" + std::to_string(request.port);
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
