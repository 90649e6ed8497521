#ifndef SFTPCLIENT_SESSION_LOCALFILES_H
#define SFTPCLIENT_SESSION_LOCALFILES_H

#include "call/Call.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace session {

/// An open file's number, closed with the object.
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

/// A local file that comes about whole or not at all: what is written goes into a file beside it, which takes its place
/// in the end. What is no regular file, such as a pipe or a device, is written to as it is.
class ArrivingFile
{
public:
    /// Throws `Failure` (23) where it cannot be written, and when the call must end while nobody reads from a pipe.
    /// REQUIRES: the call outlives this object.
    ArrivingFile(const std::string& path, const Call& call);

    /// The same, but what is written is kept when it does not take its place, and found again by the next object of
    /// the same path and version (some letters). While one such object lives, others begin anew.
    ArrivingFile(const std::string& path, const Call& call, const std::string& version);

    /// Throws `Failure` (23) for a path that cannot be a file's, without touching anything.
    static void requireFile(const std::string& path);

    /// Removes what has not taken its place, unless it is kept.
    ~ArrivingFile();
    ArrivingFile(const ArrivingFile&) = delete;
    ArrivingFile& operator=(const ArrivingFile&) = delete;

    /// Bytes that are there.
    std::int64_t size() const { return m_size; }
    /// The last `count` of them.
    std::string end(std::size_t count) const;
    /// Lets all of them go.
    void startOver();

    /// Behind what is there. Throws `Failure` (23) when the disk takes no more.
    bool write(const char* bytes, std::size_t count);

    /// Puts the file into its place; with `syncs` it is on the disk then. Throws `Failure` (23).
    void takePlace(bool syncs);

private:
    bool openKept(const std::string& version);
    void openNew();
    void openPipe();
    void requireCall() const;
    std::string beside(const std::string& middle) const;
    [[noreturn]] void fail(int error);

    const Call& m_call;
    std::string m_asked;     // the request's path
    std::string m_path;      // of the file itself, where the request's is a link
    std::string m_temporary; // empty: there is none
    Descriptor m_descriptor;
    std::int64_t m_size = 0;
    bool m_isKept = false;
    std::optional<struct stat> m_replaced;
};

/// A regular local file that is sent.
class LeavingFile
{
public:
    /// Throws `Failure` (26) where it cannot be read, or is no regular file.
    explicit LeavingFile(const std::string& path);

    std::int64_t size() const { return m_size; }

    /// As `DataSource`. Throws `Failure` (26).
    std::size_t read(char* bytes, std::size_t count) const;
    /// Where reading goes on; false where that cannot be.
    bool seek(std::int64_t offset) const noexcept;
    /// `count` bytes from there on, or as many as there are.
    std::string part(std::int64_t offset, std::size_t count) const;

    /// What tells this content from another one: machine, file, size and time.
    std::string version() const;
    /// Whether no other call sends it in parts that may be continued; holds until this object goes.
    bool lock() const;

private:
    std::string m_path;
    Descriptor m_descriptor;
    std::int64_t m_size = 0;
};

} // namespace session

#endif
