#ifndef SFTPCLIENT_CLI_OUTPUT_LISTING_H
#define SFTPCLIENT_CLI_OUTPUT_LISTING_H

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

/// The names in the listing in the file `path`, without the ends of their lines. Throws `std::runtime_error` when it
/// cannot be read.
std::vector<std::string> namesIn(const std::string& path);

/// Copies the listing in the file `path` to `out`: byte for byte, or for a terminal, one escaped name a line. Throws
/// `std::runtime_error` when the file cannot be read or `out` takes no more.
void printListing(const std::string& path, std::ostream& out, bool forTerminal);

#endif
