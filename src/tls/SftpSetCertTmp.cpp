#include "log/LogStatement.h"
#include "tls/TlsTrust.h"

#include <ConfigReader.h>

void sftpSetCertTmp(CURL* curl, const std::string& cert)
{
    curl_easy_setopt(curl, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_DEFAULT));
    curl_easy_setopt(curl, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    curl_easy_setopt(curl, CURLOPT_SSLCERTTYPE, "PEM");

    if (cert == "none" && ConfigReader::getInt("General", "CertAuthSwitch", true) == 0) {
        // No blank after the colon: the record ends in ":none".
        SFTP_LOG_WITHOUT_REQUEST(kLogDetail, "Establish SSL without cert:" << cert);
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
        return;
    }

    // "none" comes here too when the switch is on: the hook cannot read it as a certificate and stops the handshake.
    SFTP_LOG_WITHOUT_REQUEST(kLogDetail, "Establish SSL with cert");
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_CTX_DATA, &cert);
    curl_easy_setopt(curl, CURLOPT_SSL_CTX_FUNCTION, sftp_sslCtx_function);
    // Servers are known by their chain alone: hosts reach them under addresses that their certificates do not name.
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
}
