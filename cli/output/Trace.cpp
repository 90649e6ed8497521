#include "output/Trace.h"

#include "base/WipedAtEnd.h"

#include <EscapeControlBytes.h>

#include <ostream>

namespace {

char signOf(curl_infotype type)
{
    if (type == CURLINFO_HEADER_OUT) {
        return '>';
    }
    return type == CURLINFO_HEADER_IN ? '<' : '*';
}

} // namespace

void Trace::write(curl_infotype type, std::string_view text)
{
    if (type != CURLINFO_TEXT && type != CURLINFO_HEADER_IN && type != CURLINFO_HEADER_OUT) {
        return;
    }
    if (m_progress != nullptr) {
        m_progress->clear();
    }
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string line(text.substr(0, end));
        const WipedAtEnd wiped(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        m_out << signOf(type) << ' ' << escapeControlBytes(m_mask.masked(type, line)) << std::endl;
    }
}
