#include "support/Lines.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr std::size_t kContext = 3;

// One line of a difference: in both (' '), only expected ('-') or only actual ('+').
struct Step
{
    char mark;
    const std::string& line;
};

// The length of the longest common subsequence of what follows each pair of places.
std::vector<std::vector<std::size_t>> commonLengths(const Lines& expected, const Lines& actual)
{
    std::vector<std::vector<std::size_t>> lengths(expected.size() + 1, std::vector<std::size_t>(actual.size() + 1));
    for (std::size_t i = expected.size(); i-- > 0;) {
        for (std::size_t j = actual.size(); j-- > 0;) {
            lengths[i][j] =
                expected[i] == actual[j] ? lengths[i + 1][j + 1] + 1 : std::max(lengths[i + 1][j], lengths[i][j + 1]);
        }
    }
    return lengths;
}

std::vector<Step> stepsBetween(const Lines& expected, const Lines& actual)
{
    const auto lengths = commonLengths(expected, actual);
    std::vector<Step> steps;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < expected.size() || j < actual.size()) {
        if (i < expected.size() && j < actual.size() && expected[i] == actual[j]) {
            steps.push_back({' ', expected[i++]});
            ++j;
        } else if (i < expected.size() && (j == actual.size() || lengths[i + 1][j] >= lengths[i][j + 1])) {
            steps.push_back({'-', expected[i++]});
        } else {
            steps.push_back({'+', actual[j++]});
        }
    }
    return steps;
}

bool isNearDifference(const std::vector<Step>& steps, std::size_t at)
{
    const std::size_t begin = at > kContext ? at - kContext : 0;
    const std::size_t end = std::min(at + kContext + 1, steps.size());
    return std::any_of(steps.begin() + static_cast<std::ptrdiff_t>(begin),
                       steps.begin() + static_cast<std::ptrdiff_t>(end),
                       [](const Step& step) { return step.mark != ' '; });
}

// The parts before, between and after line ends.
Lines split(const std::string& text)
{
    Lines pieces;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        pieces.push_back(text.substr(begin, end - begin));
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

std::string shown(const Lines& lines)
{
    std::string text;
    for (const std::string& each : lines) {
        text += "\n    " + testing::PrintToString(each);
    }
    return text + "\n";
}

} // namespace

Lines operator+(Lines left, const Lines& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Lines linesOf(const std::string& text)
{
    Lines lines = split(text);
    if (lines.back().empty()) {
        lines.pop_back();
    }
    return lines;
}

std::string lastLine(const std::string& text)
{
    const Lines lines = linesOf(text);
    return lines.empty() ? "" : lines.back();
}

Lines lastOf(const Lines& lines, std::size_t count)
{
    return Lines(lines.end() - static_cast<std::ptrdiff_t>(std::min(count, lines.size())), lines.end());
}

testing::AssertionResult sameLines(const Lines& expected, const Lines& actual)
{
    if (expected == actual) {
        return testing::AssertionSuccess() << "the same " << expected.size() << " lines";
    }
    const std::vector<Step> steps = stepsBetween(expected, actual);
    std::ostringstream difference;
    bool skipping = false;
    for (std::size_t at = 0; at < steps.size(); ++at) {
        if (isNearDifference(steps, at)) {
            difference << "\n  " << steps[at].mark << " " << testing::PrintToString(steps[at].line);
            skipping = false;
        } else if (!skipping) {
            difference << "\n    ...";
            skipping = true;
        }
    }
    return testing::AssertionFailure() << "expected (-), actual (+):" << difference.str() << "\n";
}

testing::AssertionResult sameText(const std::string& expected, const std::string& actual)
{
    return sameLines(split(expected), split(actual));
}

testing::AssertionResult holds(const std::string& part, const std::string& text)
{
    const bool found = text.find(part) != std::string::npos;
    return testing::AssertionResult(found)
           << testing::PrintToString(part) << (found ? " is in:" : " is missing from:") << shown(linesOf(text));
}

testing::AssertionResult hasLine(const std::string& line, const Lines& lines)
{
    const bool found = std::find(lines.begin(), lines.end(), line) != lines.end();
    return testing::AssertionResult(found)
           << testing::PrintToString(line) << (found ? " is among:" : " is missing from:") << shown(lines);
}
