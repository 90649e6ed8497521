#include <SecuritySS.h>

#include "HostConfiguration.h"
#include "HostTlsSettings.h"
#include "OtherServices.h"
#include "ReportFailure.h"

#include <curl/curl.h>

#include <exception>
#include <stdexcept>

namespace {

void require(CURLcode answer, const char* setting)
{
    if (answer != CURLE_OK) {
        throw std::runtime_error(std::string("libcurl refuses ") + setting + ": " + curl_easy_strerror(answer));
    }
}

void setList(CURL* curl, CURLoption option, const std::string& list, const char* setting)
{
    if (!list.empty()) {
        require(curl_easy_setopt(curl, option, list.c_str()), setting);
    }
}

[[maybe_unused]] const bool anotherIsUsed = tellOfOtherServices();

} // namespace

SecuritySS_RC SecuritySS::enrichSSL(void* curl, std::string& /*cert*/)
try {
    const HostTlsSettings settings = tlsSettingsFrom(*HostConfiguration::instance().values());
    require(curl_easy_setopt(curl, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2)),
            "TLS 1.2 as the minimum version");
    setList(curl, CURLOPT_SSL_CIPHER_LIST, settings.cipherList, "CipherList of section Security");
    setList(curl, CURLOPT_TLS13_CIPHERS, settings.tls13Ciphers, "Tls13Ciphers of section Security");
    return SECURITYSS_SUCCESS;
} catch (const std::exception& error) {
    reportFailure("SecuritySS::enrichSSL()", __LINE__,
                  {"The TLS settings cannot be made: ", error.what(), ". Do not use this handle."});
    return SECURITYSS_FAILURE;
}
