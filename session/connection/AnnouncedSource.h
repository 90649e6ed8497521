#ifndef SFTPCLIENT_SESSION_ANNOUNCEDSOURCE_H
#define SFTPCLIENT_SESSION_ANNOUNCEDSOURCE_H

#include <SFtpSession.h>

#include <cstddef>
#include <cstdint>

namespace session {

/// The bytes of an upload, which must be as many as were announced.
class AnnouncedSource
{
public:
    AnnouncedSource() = default;
    /// `size` is -1 if unknown. The server has the first `offset` bytes already.
    AnnouncedSource(DataSource source, std::int64_t size, std::int64_t offset = 0);

    /// Gives the next bytes; 0 at the end. Throws `Failure` if there are more or fewer bytes than announced, or the
    /// source has returned more than it was asked for.
    std::size_t give(char* bytes, std::size_t count);
    /// Throws `Failure` if there is another byte.
    void requireEnd();
    /// Whether all bytes have been given.
    bool isAtEnd() const { return m_isAtEnd; }
    /// The bytes given, and those that the server had already.
    std::int64_t given() const { return m_given; }

private:
    std::size_t fill(char* bytes, std::size_t count);
    void requireAnnounced(bool isEnd) const;

    DataSource m_source;
    std::int64_t m_size = -1;
    std::int64_t m_given = 0;
    bool m_isAtEnd = false;
};

} // namespace session

#endif
