#ifndef SFTPCLIENT_CLI_OUTPUT_LISTING_H
#define SFTPCLIENT_CLI_OUTPUT_LISTING_H

#include <fstream>
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

/// Opens the listing in the file `path`. Throws `std::runtime_error` when it cannot be read.
std::ifstream openListing(const std::string& path);

/// The names in a listing, without the ends of their lines.
std::vector<std::string> namesIn(std::istream& listing);

/// Copies a listing to `out`: byte for byte, or for a terminal, one escaped name a line. Throws `std::runtime_error`
/// when `out` takes no more.
void printListing(std::istream& listing, std::ostream& out, bool forTerminal);

#endif
