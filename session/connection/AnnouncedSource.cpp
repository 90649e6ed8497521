#include "connection/AnnouncedSource.h"

#include "call/Failure.h"

#include <string>
#include <utility>

namespace session {

AnnouncedSource::AnnouncedSource(DataSource source, std::int64_t size, std::int64_t offset)
    : m_source(std::move(source)), m_size(size), m_given(offset)
{
}

std::size_t AnnouncedSource::give(char* bytes, std::size_t count)
{
    const std::size_t given = fill(bytes, count);
    m_given += static_cast<std::int64_t>(given);
    m_isAtEnd = given == 0 || m_given == m_size;
    requireAnnounced(given == 0);
    if (m_isAtEnd && given > 0) {
        requireEnd(); // libcurl stops asking at the announced number of bytes
    }
    return given;
}

void AnnouncedSource::requireEnd()
{
    char further = 0;
    m_given += static_cast<std::int64_t>(fill(&further, 1));
    requireAnnounced(true);
}

// Some numbers mean to libcurl that the upload is to pause or to end.
std::size_t AnnouncedSource::fill(char* bytes, std::size_t count)
{
    const std::size_t given = m_source(bytes, count);
    if (given > count) {
        throw refusal(CURLE_READ_ERROR,
                      "the source has returned " + std::to_string(given) + ", asked for " + std::to_string(count));
    }
    return given;
}

void AnnouncedSource::requireAnnounced(bool isEnd) const
{
    const auto announced = [this] { return std::to_string(m_size) + " bytes that were announced"; };
    if (m_size >= 0 && m_given > m_size) {
        throw refusal(CURLE_READ_ERROR, "the source has more than the " + announced());
    }
    if (m_size >= 0 && m_given < m_size && isEnd) {
        throw refusal(CURLE_READ_ERROR, "the source has only " + std::to_string(m_given) + " of the " + announced());
    }
}

} // namespace session
