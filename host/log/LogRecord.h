#ifndef SFTPCLIENT_HOST_LOGRECORD_H
#define SFTPCLIENT_HOST_LOGRECORD_H

#include <string>
#include <string_view>

/// One record on its way to the log. The texts are the caller's.
struct LogRecord
{
    int level;                 ///< 1 detail, 2 normal end; 4, or a number that has no meaning, failure
    std::string_view module;   ///< who wrote it: "SFtpClient" for the library
    unsigned long requestId;   ///< of the thread that wrote it, or 0
    std::string_view function; ///< where it was written
    unsigned int line;         ///< and in which line
    std::string_view text;     ///< not trusted: it may hold what a server said
};

/// What a line of text says after time and level: "SFtpClient request=7 SFtpClient::Listsftpdir():41 end". Control
/// characters and invalid UTF-8 are escaped: paths and what servers say are not trusted. Of a text of more than 65536
/// bytes the beginning is there, followed by " [N bytes left out]".
std::string asText(const LogRecord& record);

/// What a JSON object says after time and level, without the braces: "module":"SFtpClient","request":7,... The texts
/// are escaped as `jsonText` tells, and bounded as above.
std::string asJson(const LogRecord& record);

#endif
