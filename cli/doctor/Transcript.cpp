#include "doctor/Transcript.h"

#include "base/ServerReplies.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace doctor {

namespace {

// Of what a server says without end, this much is kept.
constexpr std::string::size_type kLongestLine = 4096;
// Heard before it is cut, so that a password at the end of what is kept is masked as a whole.
constexpr std::string::size_type kLongestHeard = 2 * kLongestLine;
constexpr std::size_t kMostLines = 10000;
constexpr std::size_t kMostBytes = std::size_t{1} << 20;
constexpr std::string::size_type kCodeDigits = 3;
constexpr char kSshBanner[] = "SSH-";

std::string withoutLineEnd(std::string line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.pop_back();
    }
    return line;
}

ServerText cut(const ServerText& text, std::string::size_type size)
{
    return ServerText::restored(text.raw().substr(0, size), text.shown().substr(0, size));
}

} // namespace

bool endsReply(const std::string& line)
{
    return beginsWithCode(line) && (line.size() == kCodeDigits || line[kCodeDigits] == ' ');
}

Reply replyOf(const std::string& lastLine, const PasswordMask& mask)
{
    const std::string code = lastLine.substr(0, kCodeDigits);
    const std::string text = lastLine.size() > kCodeDigits ? lastLine.substr(kCodeDigits + 1) : "";
    return {Ending::Complete, std::stoi(code), ServerText::following(code + " ", text, mask)};
}

void Transcript::listenTo(CURL* handle)
{
    curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, report);
    curl_easy_setopt(handle, CURLOPT_DEBUGDATA, this);
}

void Transcript::beginAnew()
{
    m_line.clear();
    m_first.clear();
    m_bytes = m_lines = 0;
    m_exchanges.emplace_back();
}

void Transcript::addCommand(const std::string& line)
{
    const std::string command = withoutLineEnd(line);
    const std::string verb = command.substr(0, command.find(' '));
    m_line.clear();
    m_first.clear();
    m_bytes = m_lines = 0;
    m_exchanges.push_back({verb == "PASS" ? verb : command, {}});
}

void Transcript::addReply(const std::string& bytes)
{
    m_bytes += bytes.size();
    for (const char byte : bytes) {
        if (byte == '\n') {
            endLine();
        } else if (m_line.size() < kLongestHeard) {
            m_line += byte;
        }
    }
}

void Transcript::endLine()
{
    const std::string line = withoutLineEnd(std::move(m_line));
    m_line.clear();
    ++m_lines;
    if (endsReply(line)) {
        Reply& reply = m_exchanges.back().reply = replyOf(line, m_mask);
        reply.text = cut(reply.text, kLongestLine - kCodeDigits - 1);
    } else if (line.compare(0, 4, kSshBanner) == 0) {
        m_isOfSsh = true;
        m_first = line;
    } else if (m_first.empty()) {
        m_first = line;
    }
}

bool Transcript::isEnough(const std::optional<std::string>& lastCommand) const
{
    const Exchange& last = m_exchanges.back();
    const bool isAnswered = last.reply.ending == Ending::Complete;
    const bool isEndless = !isAnswered && (m_lines >= kMostLines || m_bytes >= kMostBytes);
    const bool isLast = lastCommand && last.command.compare(0, lastCommand->size(), *lastCommand) == 0;
    return isEndless || m_isOfSsh || (isAnswered && isLast);
}

// What came before the end says what kind of server this is.
void Transcript::end(CURLcode code)
{
    Reply& reply = m_exchanges.back().reply;
    if (reply.ending != Ending::NotTried) {
        return;
    }
    const Ending broken = code == CURLE_OPERATION_TIMEDOUT ? Ending::Silent : Ending::Closed;
    reply = {isEnough() ? Ending::Garbled : broken, 0, cut({m_first.empty() ? m_line : m_first, m_mask}, kLongestLine)};
}

int Transcript::report(CURL* /*handle*/, curl_infotype kind, char* bytes, size_t count, void* self) noexcept
try {
    auto& transcript = *static_cast<Transcript*>(self);
    if (kind == CURLINFO_HEADER_OUT) {
        transcript.addCommand(std::string(bytes, count));
    } else if (kind == CURLINFO_HEADER_IN) {
        transcript.addReply(std::string(bytes, count));
    }
    return 0;
} catch (const std::exception&) {
    // libcurl is C: an exception must not unwind it. What is not taken down counts as not said.
    return 0;
}

std::string Reply::shown() const
{
    const std::string number = code == 0 ? "" : std::to_string(1000 + code).substr(1);
    return number + (number.empty() || text.shown().empty() ? "" : " ") + text.shown();
}

const Reply* ProbeResult::replyTo(const std::string& beginning) const
{
    const auto found = std::find_if(transcript.rbegin(), transcript.rend(), [&beginning](const Exchange& each) {
        return each.command.compare(0, beginning.size(), beginning) == 0;
    });
    return found == transcript.rend() ? nullptr : &found->reply;
}

const Reply* ProbeResult::lastReply() const
{
    const auto found = std::find_if(transcript.rbegin(), transcript.rend(),
                                    [](const Exchange& each) { return each.reply.ending == Ending::Complete; });
    return found == transcript.rend() ? nullptr : &found->reply;
}

bool ProbeResult::loggedIn() const
{
    const auto letsIn = [this](const char* command) {
        const Reply* const reply = replyTo(command);
        return reply != nullptr && reply->code / 100 == 2;
    };
    return letsIn("PASS") || letsIn("USER");
}

} // namespace doctor
