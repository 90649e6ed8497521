#ifndef SFTPCLIENT_SESSION_QUOTING_H
#define SFTPCLIENT_SESSION_QUOTING_H

#include <string>

namespace session {

/// A path for libcurl's SFTP commands: in double quotes, in which a backslash stands before what would end them.
inline std::string quoted(const std::string& path)
{
    std::string text = "\"";
    for (const char character : path) {
        if (character == '"' || character == '\\') {
            text.append(1, '\\');
        }
        text.append(1, character);
    }
    return text.append(1, '"');
}

} // namespace session

#endif
