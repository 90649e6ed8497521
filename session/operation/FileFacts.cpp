// What a server tells about one file, or changes in it, beside its bytes: time and checksum.
#include "operation/Entries.h"
#include "operation/Features.h"
#include "operation/Operations.h"

#include "call/Failure.h"
#include "connection/Transfer.h"
#include "request/Text.h"

#include <boost/date_time/gregorian/conversion.hpp>
#include <boost/date_time/gregorian/gregorian_types.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <ctime>
#include <limits>

namespace session {

namespace {

using Time = std::chrono::system_clock::time_point;

// A gap of the server's, not of libcurl's, whose own text for the code would blame the wrong one.
Failure notOffered(const std::string& what) { return {CURLE_NOT_BUILT_IN, "The server does not offer " + what}; }

std::int64_t secondsOf(Time time) { return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count(); }

std::string textOf(Time time, const char* format)
{
    // Not gmtime, whose argument has 32 bits on some machines.
    constexpr std::int64_t kDay = 86400;
    const std::int64_t seconds = secondsOf(time);
    const std::int64_t rest = (seconds % kDay + kDay) % kDay;
    const boost::gregorian::date day =
        boost::gregorian::date(1970, 1, 1) + boost::gregorian::days(static_cast<int>((seconds - rest) / kDay));
    if (day.year() < 1900) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, "the time is not within the years 1900 to 9999");
    }
    std::tm parts = boost::gregorian::to_tm(day);
    parts.tm_hour = static_cast<int>(rest / 3600);
    parts.tm_min = static_cast<int>(rest / 60 % 60);
    parts.tm_sec = static_cast<int>(rest % 60);
    std::array<char, 64> text = {};
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

std::string nameOf(const Work& work)
{
    work.access.target().requireFile();
    return work.access.target().name();
}

// libcurl would drop the other bits.
void requireTimeOfSsh(Time time)
{
    if (secondsOf(time) < 0 || secondsOf(time) > std::numeric_limits<std::uint32_t>::max()) {
        throw refusal(CURLE_BAD_FUNCTION_ARGUMENT, "SSH knows no time before 1970 or after 2106-02-07T06:28:15Z");
    }
}

// A refusal of the command itself, not of the file.
bool isUnknownCommand(const Replies& replies) { return replies.lastCode() == 500 || replies.lastCode() == 502; }

Failure missing(const std::string& why) { return refusal(CURLE_REMOTE_FILE_NOT_FOUND, why); }

std::vector<std::string> wordsOf(const std::string& reply)
{
    std::vector<std::string> words;
    for (std::string::size_type begin = 0; begin < reply.size();) {
        const std::string::size_type end = std::min(reply.find(' ', begin), reply.size());
        if (end > begin) {
            words.push_back(reply.substr(begin, end - begin));
        }
        begin = end + 1;
    }
    return words;
}

bool isHex(const std::string& word)
{
    return std::all_of(word.begin(), word.end(), [](unsigned char digit) { return std::isxdigit(digit) != 0; });
}

// "213 SHA-256 0-4 DIGITS NAME" of HASH, "250 DIGITS" of the others.
std::string digitsIn(const Replies& replies, std::size_t digits, const std::string& algorithm)
{
    const std::vector<std::string> words = wordsOf(replies.last());
    const bool named = !algorithm.empty();
    const std::size_t at = named ? 3 : 1;
    if (words.size() <= at || (named && lowerCase(words[1]) != algorithm) || !isHex(words[at]) ||
        words[at].size() > digits || (named && words[at].size() != digits)) {
        throw refusal(CURLE_WEIRD_SERVER_REPLY, "the reply holds no checksum");
    }
    return std::string(digits - words[at].size(), '0') + lowerCase(words[at]);
}

} // namespace

Time readModified(const Work& work)
{
    const Target& target = work.access.target();
    const std::string name = nameOf(work);
    if (target.isSsh()) {
        const std::optional<RemoteEntry> file = fileAt(work, target.url());
        if (!file || !file->modified) {
            throw missing("there is no \"" + name + "\"");
        }
        return *file->modified;
    }
    Transfer transfer(work.connection, work.access, work.call);
    transfer.visit(target.parentUrl());
    transfer.withoutData();
    transfer.after({"MDTM " + name});
    if (const CURLcode code = transfer.tryToRun()) {
        if (code == CURLE_QUOTE_ERROR && isUnknownCommand(transfer.replies())) {
            throw notOffered("MDTM");
        }
        throw transfer.failure(code == CURLE_QUOTE_ERROR ? CURLE_REMOTE_FILE_NOT_FOUND : code);
    }
    constexpr std::string_view kCode = "213 ";
    const std::string& reply = transfer.replies().last();
    const std::optional<Time> time =
        reply.compare(0, kCode.size(), kCode) == 0 ? timeIn(reply.substr(kCode.size())) : std::nullopt;
    if (!time) {
        throw refusal(CURLE_WEIRD_SERVER_REPLY, "the reply to MDTM holds no time");
    }
    return *time;
}

void setModified(const Work& work, Time modified)
{
    const Target& target = work.access.target();
    const std::string name = nameOf(work);
    if (target.isSsh()) {
        requireTimeOfSsh(modified);
        // In digits: the name of a month would be in the host's language, libcurl reads English.
        visitDirectory(work, target.parentUrl(),
                       {"mtime " + quoted(textOf(modified, "%Y%m%d %H:%M:%S GMT")) + " " +
                        quoted(target.commandPathInParent(name))});
        return;
    }
    const std::string command = "MFMT " + textOf(modified, "%Y%m%d%H%M%S") + " " + name;
    if (!featuresOf(work, target.parentUrl()).mfmt) {
        throw notOffered("MFMT");
    }
    visitDirectory(work, target.parentUrl(), {command});
}

RemoteChecksum readChecksum(const Work& work)
{
    constexpr std::size_t kSha256 = 64;
    constexpr std::size_t kCrc32 = 8;
    const Target& target = work.access.target();
    const std::string name = nameOf(work);
    const Features features = target.isSsh() ? Features() : featuresOf(work, target.parentUrl());
    const Replies& replies = work.connection.replies();
    if (features.hash) {
        std::vector<std::string> commands = {"HASH " + name};
        if (!features.hashIsSha256) {
            commands.insert(commands.begin(), "OPTS HASH SHA-256");
        }
        visitDirectory(work, target.parentUrl(), commands);
        return {ChecksumKind::Sha256, digitsIn(replies, kSha256, "sha-256")};
    }
    if (features.xsha256) {
        visitDirectory(work, target.parentUrl(), {"XSHA256 " + name});
        return {ChecksumKind::Sha256, digitsIn(replies, kSha256, "")};
    }
    if (features.xcrc) {
        visitDirectory(work, target.parentUrl(), {"XCRC " + name});
        return {ChecksumKind::Crc32, digitsIn(replies, kCrc32, "")};
    }
    throw notOffered("HASH with SHA-256, XSHA256 or XCRC");
}

} // namespace session
