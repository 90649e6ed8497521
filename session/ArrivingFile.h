#ifndef SFTPCLIENT_SESSION_ARRIVINGFILE_H
#define SFTPCLIENT_SESSION_ARRIVINGFILE_H

#include <cstddef>
#include <string>

namespace session {

/// A local file that comes about whole or not at all: what is written goes into a file beside it, which takes its place
/// in the end. What is no regular file, such as a pipe or a device, is written to as it is.
class ArrivingFile
{
public:
    /// Throws `Failure` (23) where it cannot be written.
    explicit ArrivingFile(const std::string& path);
    /// Removes what has not taken its place.
    ~ArrivingFile();
    ArrivingFile(const ArrivingFile&) = delete;
    ArrivingFile& operator=(const ArrivingFile&) = delete;

    /// Throws `Failure` (23) when the disk takes no more.
    bool write(const char* bytes, std::size_t count);

    /// Puts the file into its place; on the disk, too. Throws `Failure` (23).
    void takePlace();

private:
    std::string m_path;      // of the file itself, where the request's is a link
    std::string m_temporary; // empty: there is none
    int m_descriptor = -1;
};

} // namespace session

#endif
