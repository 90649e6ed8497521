#ifndef SFTPCLIENT_HOST_HOSTTLSSETTINGS_H
#define SFTPCLIENT_HOST_HOSTTLSSETTINGS_H

#include <string>

class IniFile;

/// What the ready security service asks of TLS besides version 1.2. An empty list leaves the choice to libcurl.
struct HostTlsSettings
{
    std::string cipherList;   ///< for TLS 1.2, in OpenSSL's notation: "ECDHE+AESGCM:!aRSA"
    std::string tls13Ciphers; ///< for TLS 1.3: "TLS_AES_256_GCM_SHA384:TLS_AES_128_GCM_SHA256"
};

/// The settings of section `Security`: `CipherList` and `Tls13Ciphers`. Throws `std::runtime_error` when there is any
/// other key.
HostTlsSettings tlsSettingsFrom(const IniFile& values);

#endif
