#include "operation/Entries.h"

#include <boost/date_time/gregorian/gregorian_types.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>

namespace session {

namespace {

constexpr std::size_t kMode = 10; // letters, such as "-rw-r--r--"
constexpr std::string_view kKinds = "-dlbcps";

bool isOneOfTheDots(std::string_view name) { return name == "." || name == ".."; }

template <typename Number>
std::optional<Number> numberIn(std::string_view text)
{
    Number number = 0;
    const std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = read.ec == std::errc() && read.ptr == text.data() + text.size();
    return whole && number >= 0 ? std::optional<Number>(number) : std::nullopt;
}

EntryKind kindOf(const std::string& type)
{
    if (type == "file") {
        return EntryKind::File;
    }
    return type == "dir" || type == "cdir" || type == "pdir" ? EntryKind::Directory : EntryKind::Other;
}

void takeFact(std::string_view fact, RemoteEntry& entry, std::string& type)
{
    const std::size_t sign = fact.find('=');
    if (sign == std::string_view::npos) {
        return;
    }
    const std::string name = lowerCase(fact.substr(0, sign));
    const std::string_view value = fact.substr(sign + 1);
    if (name == "type") {
        type = lowerCase(value);
        entry.kind = kindOf(type);
    } else if (name == "size") {
        entry.size = numberIn<std::int64_t>(value).value_or(-1);
    } else if (name == "modify") {
        entry.modified = timeIn(value);
    }
}

std::string_view takeWord(std::string_view& line)
{
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(word.size());
    return word;
}

bool isNumber(std::string_view word)
{
    return !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isTime(std::string_view word) { return word.find(':') != std::string_view::npos; }

// The number before the month. What stands before it is the group, whose name may hold blanks ("domain users").
std::string_view takeSize(std::string_view& line)
{
    for (;;) {
        const std::string_view word = takeWord(line);
        std::string_view rest = line;
        const bool isLast = isNumber(word) && !isNumber(takeWord(rest));
        if (word.empty() || isLast) {
            return word;
        }
    }
}

std::string_view withoutEnd(std::string_view line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

// Not tolower, which in a Turkish host knows another letter for "I".
std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
        return static_cast<char>(character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character);
    });
    return lower;
}

std::optional<std::chrono::system_clock::time_point> timeIn(std::string_view text)
{
    constexpr std::size_t kDigits = 14;
    if (text.size() < kDigits || (text.size() > kDigits && text[kDigits] != '.') ||
        !std::all_of(text.begin(), text.begin() + kDigits,
                     [](unsigned char digit) { return std::isdigit(digit) != 0; })) {
        return std::nullopt;
    }
    const auto part = [&text](std::size_t at, std::size_t size) {
        return *numberIn<unsigned short>(text.substr(at, size));
    };
    constexpr unsigned kFirstYear = 1400; // of Boost's calendar
    const auto year = part(0, 4);
    const auto month = part(4, 2);
    const int day = part(6, 2);
    const int hour = part(8, 2);
    const int minute = part(10, 2);
    const int second = part(12, 2);
    const bool exists = year >= kFirstYear && month >= 1 && month <= 12 && day >= 1 && day <= 31 && hour < 24 &&
                        minute < 60 && second <= 60;
    if (!exists) {
        return std::nullopt;
    }
    // Not timegm, whose result has 32 bits on some machines.
    using boost::gregorian::date;
    const std::int64_t days = (date(year, month, 1) - date(1970, 1, 1)).days() + day - 1;
    return timeAt(((days * 24 + hour) * 60 + minute) * 60 + second);
}

// The clock counts in smaller steps than seconds, from 1677 to 2262.
std::optional<std::chrono::system_clock::time_point> timeAt(std::int64_t seconds)
{
    using Clock = std::chrono::system_clock;
    const auto inSeconds = [](Clock::duration time) {
        return std::chrono::duration_cast<std::chrono::seconds>(time).count();
    };
    if (seconds < inSeconds(Clock::duration::min()) || seconds > inSeconds(Clock::duration::max())) {
        return std::nullopt;
    }
    return Clock::time_point(std::chrono::seconds(seconds));
}

bool leadsNowhereElse(std::string_view name)
{
    return name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

std::optional<RemoteEntry> entryOfFacts(std::string_view line)
{
    line = withoutEnd(line);
    // A value may hold a blank, as that of a group ("domain users").
    const bool hasFacts = !line.empty() && line.front() != ' ';
    const std::size_t end = hasFacts ? line.find("; ") : 0;
    if (line.empty() || end == std::string_view::npos) {
        return std::nullopt;
    }
    RemoteEntry entry;
    entry.name = line.substr(end + (hasFacts ? 2 : 1));
    std::string type;
    for (std::string_view facts = line.substr(0, end); !facts.empty();) {
        const std::string_view fact = facts.substr(0, facts.find(';'));
        takeFact(fact, entry, type);
        facts.remove_prefix(std::min(fact.size() + 1, facts.size()));
    }
    const bool isItself = type == "cdir" || type == "pdir" || isOneOfTheDots(entry.name);
    if (entry.name.empty() || isItself) {
        return std::nullopt;
    }
    if (entry.kind != EntryKind::File) {
        entry.size = -1;
    }
    return entry;
}

std::optional<RemoteEntry> entryOfLongLine(std::string_view line)
{
    line = withoutEnd(line);
    const std::string_view mode = takeWord(line);
    if (mode.size() < kMode || kKinds.find(mode.front()) == std::string_view::npos) {
        return std::nullopt;
    }
    takeWord(line); // links
    takeWord(line); // owner
    const std::string_view size = takeSize(line);
    takeWord(line); // month
    const std::string_view day = takeWord(line);
    const std::string_view timeOrYear = takeWord(line);
    // In a date of two words, the third is the beginning of the name.
    const bool isDate = !isTime(day) && (isTime(timeOrYear) || isNumber(timeOrYear));
    // One blank; further ones belong to the name.
    if (line.size() < 2 || !isDate || !numberIn<std::int64_t>(size)) {
        return std::nullopt;
    }
    RemoteEntry entry;
    entry.name = line.substr(1);
    entry.kind = mode.front() == '-' ? EntryKind::File : mode.front() == 'd' ? EntryKind::Directory : EntryKind::Other;
    if (mode.front() == 'l') {
        entry.name = entry.name.substr(0, entry.name.find(" -> "));
    }
    if (entry.kind == EntryKind::File) {
        entry.size = *numberIn<std::int64_t>(size);
    }
    return entry.name.empty() || isOneOfTheDots(entry.name) ? std::nullopt : std::optional<RemoteEntry>(entry);
}

bool tellsNothing(std::string_view line)
{
    line = withoutEnd(line);
    const std::string_view last = line.substr(line.rfind(' ') + 1); // npos + 1 is 0
    std::string_view rest = line;
    takeWord(rest);
    const bool isSum = isNumber(takeWord(rest)) && rest.empty();
    const bool hasFacts = line.find("; ") != std::string_view::npos;
    return line.empty() || isSum || hasFacts || isOneOfTheDots(last);
}

bool looksLikeFacts(std::string_view line)
{
    line = withoutEnd(line);
    const std::string facts = lowerCase(line.substr(0, line.find(' ')));
    return facts.find("type=") != std::string::npos && line.find("; ") == std::string_view::npos;
}

bool looksLikeEntry(std::string_view line)
{
    line = withoutEnd(line);
    const std::string_view name = line.substr(line.rfind(' ') + 1); // npos + 1 is 0
    const std::string_view word = takeWord(line);
    const bool isMode = word.size() >= kMode && kKinds.find(word[0]) != std::string_view::npos &&
                        std::string_view("-r").find(word[1]) != std::string_view::npos;
    const bool isDate = !word.empty() && std::isdigit(static_cast<unsigned char>(word[0])) != 0;
    return (isMode || isDate) && !isOneOfTheDots(name);
}

} // namespace session
