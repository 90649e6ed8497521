#include "output/Listing.h"

#include "base/Descriptor.h"
#include "base/ThrowErrno.h"

#include <EscapeControlBytes.h>

#include <unistd.h>

#include <cstdlib>
#include <ostream>
#include <stdexcept>

namespace {

std::string temporaryFolder()
{
    const char* const folder = secure_getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

} // namespace

TemporaryFile::TemporaryFile() : m_path(temporaryFolder() + "/sftpclient-XXXXXX")
{
    const Descriptor made(mkstemp(m_path.data()));
    if (!made.isOpen()) {
        throwErrno("a temporary file cannot be made in " + temporaryFolder() + " (TMPDIR)");
    }
}

TemporaryFile::~TemporaryFile() { unlink(m_path.c_str()); }

std::ifstream openListing(const std::string& path)
{
    std::ifstream listing(path, std::ios::binary);
    if (!listing) {
        throw std::runtime_error("the listing in " + path + " cannot be read");
    }
    return listing;
}

std::vector<std::string> namesIn(std::istream& listing)
{
    std::vector<std::string> names;
    for (std::string name; std::getline(listing, name);) {
        if (!name.empty() && name.back() == '\r') {
            name.pop_back();
        }
        names.push_back(name);
    }
    return names;
}

void printListing(std::istream& listing, std::ostream& out, bool forTerminal)
{
    if (forTerminal) {
        for (const std::string& name : namesIn(listing)) {
            out << escapeControlBytes(name) << '\n';
        }
    } else if (listing.peek() != std::ifstream::traits_type::eof()) {
        // Inserting an empty buffer counts as a failure.
        out << listing.rdbuf();
    }
    if (!out.flush()) {
        throw std::runtime_error("the listing cannot be written to standard output");
    }
}
