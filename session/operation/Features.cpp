#include "operation/Features.h"

#include "connection/Transfer.h"
#include "operation/Entries.h"

#include <algorithm>

namespace session {

namespace {

/// What stands behind the feature's name in a line of the reply to FEAT (" HASH SHA-256*;MD5"); nothing where the line
/// names another one.
std::optional<std::string> valueOf(const std::string& line, const std::string& feature)
{
    const std::string::size_type begin = line.find_first_not_of(' ');
    if (begin == std::string::npos || begin == 0) {
        return std::nullopt;
    }
    const std::string text = lowerCase(line).substr(begin);
    const std::string::size_type blank = std::min(text.find(' '), text.size());
    return text.substr(0, blank) == feature ? std::optional(text.substr(blank)) : std::nullopt;
}

bool hasWord(const std::string& words, const std::string& word)
{
    std::string::size_type begin = 0;
    while (begin <= words.size()) {
        const std::string::size_type end = std::min(words.find_first_of("; ", begin), words.size());
        if (words.compare(begin, end - begin, word) == 0 && end - begin == word.size()) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

Features featuresIn(const std::vector<std::string>& lines)
{
    Features features;
    for (const std::string& line : lines) {
        features.mlst = features.mlst || valueOf(line, "mlst");
        features.mfmt = features.mfmt || valueOf(line, "mfmt");
        features.xsha256 = features.xsha256 || valueOf(line, "xsha256");
        features.xcrc = features.xcrc || valueOf(line, "xcrc");
        if (const std::optional<std::string> hashes = valueOf(line, "hash")) {
            features.hashIsSha256 = hasWord(*hashes, "sha-256*");
            features.hash = features.hashIsSha256 || hasWord(*hashes, "sha-256");
        }
    }
    return features;
}

} // namespace

const Features& featuresOf(const Work& work, const std::string& directoryUrl)
{
    if (!work.connection.features) {
        visitDirectory(work, directoryUrl, {"*FEAT"});
        work.connection.features = featuresIn(work.connection.replies().lines());
    }
    return *work.connection.features;
}

void visitDirectory(const Work& work, const std::string& directoryUrl, const std::vector<std::string>& commands)
{
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(directoryUrl);
    transfer.withoutData();
    transfer.after(commands);
    transfer.run();
}

} // namespace session
