#ifndef SFTPCLIENT_CLI_OUTPUT_LISTING_H
#define SFTPCLIENT_CLI_OUTPUT_LISTING_H

#include <SFtpSession.h>

#include <iosfwd>
#include <string>
#include <vector>

/// An empty file of its own name, readable by its owner alone, that is deleted with this object. Throws
/// `std::system_error`.
class TemporaryFile
{
public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// What the file `path` holds. Throws `std::runtime_error` when it cannot be read.
std::string readListing(const std::string& path);

/// The names in a listing, without the ends of their lines.
std::vector<std::string> namesIn(const std::string& listing);

/// Copies a listing to `out`: byte for byte, or for a terminal, one escaped name a line. Throws `std::runtime_error`
/// when `out` takes no more.
void printListing(const std::string& listing, std::ostream& out, bool forTerminal);

/// Writes a line for each entry: its kind ("-" a file, "d" a directory, "?" anything else), its size, its time in UTC,
/// "-" for what is unknown, and its name, for a terminal escaped. Throws as `printListing` does.
void printEntries(const std::vector<RemoteEntry>& entries, std::ostream& out, bool forTerminal);

/// "2026-11-22T04:05:06Z".
std::string timeText(std::chrono::system_clock::time_point time);

#endif
