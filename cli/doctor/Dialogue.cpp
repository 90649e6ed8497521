#include "doctor/Dialogue.h"

#include <algorithm>
#include <cctype>
#include <exception>

namespace doctor {

namespace {

// Of what a server says without end, this much is kept.
constexpr std::string::size_type kLongestLine = 4096;

std::string withoutLineEnd(std::string line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.pop_back();
    }
    return line;
}

bool beginsWithCode(const std::string& line)
{
    return line.size() >= 3 && std::all_of(line.begin(), line.begin() + 3, [](char character) {
               return std::isdigit(static_cast<unsigned char>(character)) != 0;
           });
}

} // namespace

bool endsReply(const std::string& line) { return beginsWithCode(line) && (line.size() == 3 || line[3] == ' '); }

Reply replyOf(const std::string& lastLine)
{
    return {Ending::Complete, std::stoi(lastLine.substr(0, 3)), lastLine.substr(0, kLongestLine)};
}

void Dialogue::listenTo(CURL* handle)
{
    curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, report);
    curl_easy_setopt(handle, CURLOPT_DEBUGDATA, this);
}

void Dialogue::addCommand(const std::string& line)
{
    const std::string command = withoutLineEnd(line);
    const std::string verb = command.substr(0, command.find(' '));
    m_unfinished.clear();
    m_exchanges.push_back({verb == "PASS" ? verb : m_secret.hiddenIn(command), {}});
}

void Dialogue::addReply(const std::string& bytes)
{
    m_unfinished += bytes;
    std::string::size_type end = 0;
    while ((end = m_unfinished.find('\n')) != std::string::npos) {
        const std::string line = withoutLineEnd(m_unfinished.substr(0, end));
        m_unfinished.erase(0, end + 1);
        if (endsReply(line)) {
            m_exchanges.back().reply = replyOf(m_secret.hiddenIn(line));
        }
    }
    if (m_unfinished.size() > kLongestLine) {
        m_unfinished.clear();
    }
}

int Dialogue::report(CURL* /*handle*/, curl_infotype kind, char* bytes, size_t count, void* self) noexcept
try {
    auto& dialogue = *static_cast<Dialogue*>(self);
    if (kind == CURLINFO_HEADER_OUT) {
        dialogue.addCommand(std::string(bytes, count));
    } else if (kind == CURLINFO_HEADER_IN) {
        dialogue.addReply(std::string(bytes, count));
    }
    return 0;
} catch (const std::exception&) {
    // libcurl is C: an exception must not unwind it. What is not taken down counts as not said.
    return 0;
}

const Reply* Visit::replyTo(const std::string& beginning) const
{
    const auto found = std::find_if(dialogue.rbegin(), dialogue.rend(), [&beginning](const Exchange& each) {
        return each.command.compare(0, beginning.size(), beginning) == 0;
    });
    return found == dialogue.rend() ? nullptr : &found->reply;
}

bool Visit::loggedIn() const
{
    const auto letsIn = [this](const char* command) {
        const Reply* const reply = replyTo(command);
        return reply != nullptr && reply->code / 100 == 2;
    };
    return letsIn("PASS") || letsIn("USER");
}

} // namespace doctor
