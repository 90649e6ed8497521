#ifndef SFTPCLIENT_CLI_BASE_INPUTFILE_H
#define SFTPCLIENT_CLI_BASE_INPUTFILE_H

#include "base/Descriptor.h"

#include <chrono>
#include <string>

/// A file that the user named for the command to read. It may as well be a pipe that nobody writes to, or a device that
/// never ends.
class InputFile
{
public:
    /// How long a pipe may keep its reader waiting for the next byte.
    static constexpr std::chrono::seconds kPatience{60};

    /// Opens it, and waits for nothing.
    explicit InputFile(const std::string& path);

    bool isOpen() const { return m_descriptor.isOpen(); }
    std::string whyNotOpen() const;
    int descriptor() const { return m_descriptor.get(); }

    /// Reads it to its end, into memory that is taken once: no other copy of a secret is left behind. Why that cannot
    /// be done, or nothing where it could: it cannot be read, is larger than `largest` bytes, or keeps its reader
    /// waiting.
    std::string readWhole(std::string::size_type largest, std::string& text,
                          std::chrono::milliseconds patience = kPatience) const;

    /// Warns on standard error, as ssh does, where more users than its owner can read the file. `what`: "the password
    /// file".
    void warnOfOtherReaders(const std::string& what) const;

private:
    std::string m_path;
    Descriptor m_descriptor;
    int m_error;
};

/// All of the file `file`, up to 1 MiB. Throws `UsageError` where it cannot be read or is empty: `what`, such as "The
/// CA certificate", cannot be read, and what to do about it is `remedy`.
std::string contentsOf(const std::string& file, const std::string& what, const std::string& remedy);

#endif
