#ifndef SFTPCLIENT_SESSION_REPLIES_H
#define SFTPCLIENT_SESSION_REPLIES_H

#include <string>
#include <string_view>
#include <vector>

namespace session {

/// What an FTP server has said during one transfer, as libcurl's header callback hands it over line by line.
class Replies
{
public:
    /// True where the line ends a reply.
    bool add(std::string_view line);

    /// The last line of the last complete reply, "550 no such file"; empty where there was none.
    const std::string& last() const { return m_last; }

    /// The code of the last complete reply; 0 where there was none.
    int lastCode() const { return m_lastCode; }

    /// Whether a reply of this code tells that a data connection is used now.
    static bool opensData(int code) { return code == 150 || code == 125; }
    /// Whether there has been one.
    bool openData() const { return m_openData; }

    /// All lines, without their ends; of a server without end the first thousand.
    const std::vector<std::string>& lines() const { return m_lines; }

private:
    std::string m_last;
    int m_lastCode = 0;
    bool m_openData = false;
    std::vector<std::string> m_lines;
};

/// The bytes that a reply to SIZE tells ("213 1048576"), or -1.
long long sizeInReply(std::string_view line);

} // namespace session

#endif
