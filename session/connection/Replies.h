#ifndef SFTPCLIENT_SESSION_REPLIES_H
#define SFTPCLIENT_SESSION_REPLIES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace session {

/// An FTP server's replies during one transfer, as libcurl's header callback passes them line by line.
class Replies
{
public:
    /// True if the line ends a reply.
    bool add(std::string_view line);

    /// The last line of the last complete reply, "550 no such file"; empty if there was none.
    const std::string& last() const { return m_last; }

    /// The code of the last complete reply; 0 if there was none.
    int lastCode() const { return m_lastCode; }

    /// Whether the last complete reply refuses a command. One of 42x or 52x only tells that a connection is broken.
    bool isLastRefusal() const { return m_lastCode >= 400 && m_lastCode / 10 % 10 != 2; }

    /// Whether the last complete reply announces another one (1xx) or asks for a further command (3xx).
    bool isLastPreliminary() const { return m_lastCode / 100 == 1 || m_lastCode / 100 == 3; }

    /// Whether a reply with this code announces the use of a data connection.
    static bool opensData(int code) { return code == 150 || code == 125; }
    /// Whether there has been one.
    bool openData() const { return m_openData; }

    /// All lines, without line ends; at most the first thousand.
    const std::vector<std::string>& lines() const { return m_lines; }

    /// How many replies were complete.
    std::size_t count() const { return m_count; }

private:
    std::string m_last;
    int m_lastCode = 0;
    std::size_t m_count = 0;
    bool m_openData = false;
    std::vector<std::string> m_lines;
};

/// The size in a reply to SIZE ("213 1048576"), or -1.
long long sizeInReply(std::string_view line);

} // namespace session

#endif
