#ifndef SFTPCLIENT_SESSION_LOCALFILES_H
#define SFTPCLIENT_SESSION_LOCALFILES_H

#include "call/Call.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace session {

/// Owns a file descriptor.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    bool isOpen() const { return m_number >= 0; }
    int get() const { return m_number; }

private:
    int m_number;
};

/// A local file that is replaced completely or not at all: what is written goes to a file beside it, which takes its
/// place at the end. A pipe or a device is written to directly.
class ArrivingFile
{
public:
    /// Throws `Failure` (23) if it cannot be written, and if the call must end while nobody reads from a pipe.
    /// REQUIRES: the call outlives this object.
    ArrivingFile(const std::string& path, const Call& call);

    /// The same, but what has not taken its place is kept, and found again by the next object with the same path and
    /// version (some letters). While one such object lives, others start over.
    ArrivingFile(const std::string& path, const Call& call, const std::string& version);

    /// Throws `Failure` (23) for a path that cannot be a file, without touching anything.
    static void requireFile(const std::string& path);

    /// Removes what has not taken its place, unless it is kept.
    ~ArrivingFile();
    ArrivingFile(const ArrivingFile&) = delete;
    ArrivingFile& operator=(const ArrivingFile&) = delete;

    /// The number of bytes so far.
    std::int64_t size() const { return m_size; }
    /// `count` of them from `offset` on, or as many as there are.
    std::string part(std::int64_t offset, std::size_t count) const;
    /// Discards them all.
    void startOver();

    /// Appends. Throws `Failure` (23) if that fails.
    bool write(const char* bytes, std::size_t count);

    /// Moves the file into place; with `syncs`, it is on the disk afterwards. Throws `Failure` (23).
    void takePlace(bool syncs);

private:
    mode_t mode() const;
    void openKept(const std::string& version);
    void openNew();
    void openPipe();
    void requireCall() const;
    std::string beside(const std::string& middle) const;
    [[noreturn]] void fail(int error);

    const Call& m_call;
    std::string m_asked;     // the request's path
    std::string m_path;      // the file's own, if the request's is a link
    std::string m_temporary; // empty: none
    Descriptor m_descriptor;
    std::int64_t m_size = 0;
    bool m_isKept = false;
    std::optional<struct stat> m_replaced;
};

/// A regular local file to be sent.
class LeavingFile
{
public:
    /// Throws `Failure` (26) if it cannot be read, or is not a regular file.
    explicit LeavingFile(const std::string& path);

    std::int64_t size() const { return m_size; }

    /// As `DataSource`. Throws `Failure` (26).
    std::size_t read(char* bytes, std::size_t count) const;
    /// Sets where to read next; false if that is impossible.
    bool seek(std::int64_t offset) const noexcept;
    /// `count` bytes from `offset` on, or as many as there are.
    std::string part(std::int64_t offset, std::size_t count) const;

    /// Identifies this content: machine, file, size and time.
    std::string version() const;
    /// Locks the file against other resumable uploads while this object lives; false if another call has the lock.
    bool lock() const;

private:
    std::string m_path;
    Descriptor m_descriptor;
    std::int64_t m_size = 0;
};

} // namespace session

#endif
