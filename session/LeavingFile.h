#ifndef SFTPCLIENT_SESSION_LEAVINGFILE_H
#define SFTPCLIENT_SESSION_LEAVINGFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace session {

/// A regular local file that is sent.
class LeavingFile
{
public:
    /// Throws `Failure` (26) where it cannot be read, or is no regular file.
    explicit LeavingFile(const std::string& path);
    ~LeavingFile();
    LeavingFile(const LeavingFile&) = delete;
    LeavingFile& operator=(const LeavingFile&) = delete;

    std::int64_t size() const { return m_size; }

    /// As `DataSource`. Throws `Failure` (26).
    std::size_t read(char* bytes, std::size_t count) const;

private:
    std::string m_path;
    int m_descriptor;
    std::int64_t m_size = 0;
};

} // namespace session

#endif
