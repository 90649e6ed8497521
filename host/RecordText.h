#ifndef SFTPCLIENT_HOST_RECORDTEXT_H
#define SFTPCLIENT_HOST_RECORDTEXT_H

#include <string>

/// What a record's line says after its time and level, for example
/// "SFtpClient request=7 SFtpClient::Listsftpdir():41 end". `text` is what was written into the record: its leading 0,
/// which carries no meaning, is left out. Control bytes are escaped: paths and what servers say are not trusted.
std::string recordText(const std::string& module, unsigned long requestId, const std::string& function,
                       unsigned int line, const std::string& text);

#endif
