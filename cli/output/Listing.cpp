#include "output/Listing.h"

#include "base/Descriptor.h"
#include "base/Environment.h"
#include "base/ThrowErrno.h"

#include <EscapeControlBytes.h>

#include <unistd.h>

#include <array>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

std::string temporaryFolder()
{
    const std::string folder = environmentText("TMPDIR");
    return folder.empty() ? "/tmp" : folder;
}

void flush(std::ostream& out)
{
    if (!out.flush()) {
        throw std::runtime_error("the listing cannot be written to standard output");
    }
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

std::string readListing(const std::string& path)
{
    std::ifstream listing(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(listing), {}};
    if (!listing) {
        throw std::runtime_error("the listing in " + path + " cannot be read");
    }
    return text;
}

std::vector<std::string> namesIn(const std::string& listing)
{
    std::vector<std::string> names;
    std::istringstream lines(listing);
    for (std::string name; std::getline(lines, name);) {
        if (!name.empty() && name.back() == '\r') {
            name.pop_back();
        }
        names.push_back(name);
    }
    return names;
}

void printListing(const std::string& listing, std::ostream& out, bool forTerminal)
{
    if (forTerminal) {
        for (const std::string& name : namesIn(listing)) {
            out << escapeControlBytes(name) << '\n';
        }
    } else {
        out << listing;
    }
    flush(out);
}

void printEntries(const std::vector<RemoteEntry>& entries, std::ostream& out, bool forTerminal)
{
    constexpr int kSizeWidth = 12;
    for (const RemoteEntry& each : entries) {
        const char kind = each.kind == EntryKind::File ? '-' : each.kind == EntryKind::Directory ? 'd' : '?';
        const std::string time = each.modified ? timeText(*each.modified) : "-                   ";
        out << kind << ' ' << std::setw(kSizeWidth) << (each.size < 0 ? "-" : std::to_string(each.size)) << ' ' << time
            << ' ' << (forTerminal ? escapeControlBytes(each.name) : each.name) << '\n';
    }
    flush(out);
}

std::string timeText(std::chrono::system_clock::time_point time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> text = {};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}
