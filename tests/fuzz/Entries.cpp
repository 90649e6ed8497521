// The lines of a listing, MLSD's and LIST's: the first byte chooses, the rest is what comes over the data connection.
#include "harness/Require.h"

#include <operation/Entries.h>
#include <operation/LineSplitter.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace {

// All the lines of the input, whichever pieces they come in.
std::vector<std::string> linesOf(std::string_view bytes, std::size_t piece)
{
    std::vector<std::string> lines;
    session::LineSplitter splitter([&lines](std::string_view line) { lines.emplace_back(line); });
    const DataSink sink = splitter.sink();
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        const std::string_view next = bytes.substr(at, piece);
        require(sink(next.data(), next.size()), "lines are taken");
    }
    splitter.end();
    return lines;
}

void check(const RemoteEntry& entry, const std::string& line)
{
    require(!entry.name.empty() && entry.name != "." && entry.name != "..", "an entry has a name of its own");
    require(line.find(entry.name) != std::string::npos, "the name stands in the line");
    require(entry.name.find('\n') == std::string::npos, "a name has no line end");
    const std::string name = entry.name;
    require(!session::leadsNowhereElse(name) || std::filesystem::path("dir/" + name).filename() == name.c_str(),
            "a name leads nowhere else");
    require(entry.size >= -1, "a size is a size, or unknown");
    require(entry.kind == EntryKind::File || entry.size == -1, "only files have one");
    require(!entry.modified || std::chrono::system_clock::to_time_t(*entry.modified) > -62200000000,
            "a time is in one of our years");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const bool facts = data[0] == 'f';
    const std::vector<std::string> lines = linesOf(bytes, bytes.size() + 1);
    require(lines == linesOf(bytes, 1 + data[0] % 7U), "lines are the same in any pieces");
    for (const std::string& line : lines) {
        const std::optional<RemoteEntry> entry = facts ? session::entryOfFacts(line) : session::entryOfLongLine(line);
        if (entry) {
            check(*entry, line);
        }
    }
    return 0;
}
