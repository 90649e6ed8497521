#ifndef SFTPCLIENT_CLI_BASE_SERVERREPLIES_H
#define SFTPCLIENT_CLI_BASE_SERVERREPLIES_H

#include <deque>
#include <string>
#include <string_view>

/// A reply of an FTP server.
struct Reply
{
    int code = 0;        // 0: there was none
    std::string text;    // of all its lines, as the server wrote it; cut where it is very long
    std::string command; // that it answers, such as "STOR"; empty for the greeting
};

/// Whether a line of a reply begins with the code: three digits.
bool beginsWithCode(std::string_view line);

/// What a session quotes of the server's last reply in its text about a failure, "550 no such file)", and what follows
/// that; empty where it quotes none.
std::string_view replyQuotedIn(std::string_view text);

/// The reply's code there; 0 where there is none.
int codeQuotedIn(std::string_view text);

/// The replies of one FTP conversation, from the lines that go over the control connection, and those for a proxy.
class ServerReplies
{
public:
    /// What was sent: one command a line.
    void sent(std::string_view lines);

    /// What was received: a piece of a reply, of whole lines.
    void received(std::string_view lines);

    /// The last one that was complete.
    const Reply& last() const { return m_last; }

private:
    void addText(std::string_view text);
    void end(int code);

    std::deque<std::string> m_unanswered;
    Reply m_current;
    Reply m_last;
    bool m_isProxyAsked = false; // and has not answered to the end
};

#endif
