#include "usage/Suggest.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::size_t kShortestBeginning = 3;

// The number of letters to change, add, leave out, or exchange with their neighbour, to come from one word to the
// other.
std::size_t distance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> beforeLast(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> current(to.size() + 1);
    for (std::size_t column = 0; column <= to.size(); ++column) {
        current[column] = column;
    }
    for (std::size_t row = 1; row <= from.size(); ++row) {
        beforeLast.swap(last);
        last.swap(current);
        current[0] = row;
        for (std::size_t column = 1; column <= to.size(); ++column) {
            const bool same = from[row - 1] == to[column - 1];
            current[column] =
                std::min({last[column] + 1, current[column - 1] + 1, last[column - 1] + (same ? 0U : 1U)});
            if (row > 1 && column > 1 && from[row - 1] == to[column - 2] && from[row - 2] == to[column - 1]) {
                current[column] = std::min(current[column], beforeLast[column - 2] + 1);
            }
        }
    }
    return current[to.size()];
}

std::vector<std::string> beginningWith(const std::string& word, const std::vector<std::string>& known)
{
    std::vector<std::string> found;
    if (word.size() >= kShortestBeginning) {
        std::copy_if(known.begin(), known.end(), std::back_inserter(found),
                     [&word](const std::string& one) { return one.compare(0, word.size(), word) == 0; });
    }
    return found;
}

std::vector<std::string> nearest(const std::string& word, const std::vector<std::string>& known)
{
    // A third of the letters, the dashes not counted: in a word of two letters, one.
    const auto dashes = static_cast<std::size_t>(std::count(word.begin(), word.end(), '-'));
    std::size_t best = std::max<std::size_t>(1, (word.size() - dashes) / 3);
    std::vector<std::string> found;
    for (const std::string& one : known) {
        const std::size_t changes = distance(word, one);
        if (changes < best) {
            found.clear();
        }
        if (changes <= best) {
            best = changes;
            found.push_back(one);
        }
    }
    return found;
}

} // namespace

std::string suggestionFor(const std::string& word, const std::vector<std::string>& known)
{
    std::vector<std::string> found = beginningWith(word, known);
    if (found.empty()) {
        found = nearest(word, known);
    }
    std::string text;
    for (const std::string& one : found) {
        text += (text.empty() ? "; did you mean " : " or ") + one;
    }
    return text.empty() ? "." : text + "?";
}
