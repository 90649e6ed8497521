#ifndef SFTPCLIENT_CLI_DOCTOR_TRANSCRIPT_H
#define SFTPCLIENT_CLI_DOCTOR_TRANSCRIPT_H

#include "doctor/Report.h"
#include "output/PasswordMask.h"

#include <curl/curl.h>

#include <optional>
#include <string>
#include <vector>

namespace doctor {

/// Takes down what libcurl and the server say to each other on the control connection. Of PASS only the word is kept.
class Transcript
{
public:
    explicit Transcript(const PasswordMask& mask) : m_mask(mask) { m_exchanges.emplace_back(); }

    /// Lets the handle report here. REQUIRES: this object outlives the handle's transfers.
    void listenTo(CURL* handle);

    /// What comes next is of another connection.
    void beginAnew();

    void addCommand(const std::string& line);
    /// One line, or a part of one, as it arrived.
    void addReply(const std::string& bytes);

    /// Whether nothing more need be heard: the last command begins with `lastCommand` and has its reply, or what comes
    /// goes on without an end, or is an SSH server's.
    bool isEnough(const std::optional<std::string>& lastCommand = {}) const;

    /// Says of what was not answered how it ended, by libcurl's code for the transfer.
    void end(CURLcode code);

    /// All that was said so far; it begins with the greeting, whose command is empty.
    const std::vector<Exchange>& exchanges() const { return m_exchanges; }

private:
    void endLine();
    static int report(CURL* handle, curl_infotype kind, char* bytes, size_t count, void* self) noexcept;

    const PasswordMask& m_mask;
    std::vector<Exchange> m_exchanges;
    std::string m_line;
    std::string m_first;     // line since the last command
    std::size_t m_bytes = 0; // since then, too
    std::size_t m_lines = 0;
    bool m_isOfSsh = false;
};

/// Whether a line ends a reply: three digits and a blank, or three digits alone.
bool endsReply(const std::string& line);

/// The reply that this last line of it makes. REQUIRES: it ends one.
Reply replyOf(const std::string& lastLine, const PasswordMask& mask);

} // namespace doctor

#endif
