#ifndef SFTPCLIENT_SESSION_LINESPLITTER_H
#define SFTPCLIENT_SESSION_LINESPLITTER_H

#include "call/Failure.h"

#include <SFtpSession.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace session {

/// Splits bytes that arrive piece by piece into lines, without line ends (LF or CR LF).
class LineSplitter
{
public:
    explicit LineSplitter(std::function<void(std::string_view)> take) : m_take(std::move(take)) {}

    /// REQUIRES: this object outlives it.
    DataSink sink()
    {
        return [this](const char* bytes, std::size_t count) {
            add({bytes, count});
            return true;
        };
    }

    /// Passes on what follows the last line end as a line, too.
    void end()
    {
        if (!m_rest.empty()) {
            add("\n");
        }
    }

private:
    void add(std::string_view bytes)
    {
        for (std::size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
            m_rest.append(bytes.substr(0, end));
            if (!m_rest.empty() && m_rest.back() == '\r') {
                m_rest.pop_back();
            }
            m_take(m_rest);
            m_rest.clear();
            bytes.remove_prefix(end + 1);
        }
        if (m_rest.size() + bytes.size() > kLongestLine) {
            throw refusal(CURLE_WEIRD_SERVER_REPLY, "a line of the listing does not end");
        }
        m_rest.append(bytes);
    }

    static constexpr std::size_t kLongestLine = std::size_t{1024} * 1024;

    std::function<void(std::string_view)> m_take;
    std::string m_rest;
};

} // namespace session

#endif
