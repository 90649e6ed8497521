#include "HostTlsSettings.h"

#include "IniFile.h"

HostTlsSettings tlsSettingsFrom(const IniFile& values)
{
    values.allowOnly("Security", {"CipherList", "Tls13Ciphers"});
    return {values.find("Security", "CipherList").value_or(""), values.find("Security", "Tls13Ciphers").value_or("")};
}
