#include "harness/Grammar.h"

#include <utility>

namespace grammar {

namespace {

// What is special in a script cannot be sent.
std::string escaped(std::string text)
{
    for (char& each : text) {
        each = each == '~' || each == '^' ? '-' : each;
    }
    return text;
}

std::size_t anyOf(const std::vector<std::string>& items, Dice& dice) { return dice.below(items.size()); }

// A reply of its own instead of a good one, or the other way round.
void replaceReply(std::vector<std::string>& replies, Dice& dice)
{
    std::string& changed = replies[anyOf(replies, dice)];
    changed = changed != "*" && dice.onceIn(3) ? "*" : escaped(reply(dice));
}

void insertReply(std::vector<std::string>& replies, Dice& dice)
{
    const auto at = replies.begin() + static_cast<std::ptrdiff_t>(dice.below(replies.size() + 1));
    replies.insert(at, dice.onceIn(2) ? "*" : escaped(reply(dice)));
}

void eraseReply(std::vector<std::string>& replies, Dice& dice)
{
    if (replies.size() > 1) {
        replies.erase(replies.begin() + static_cast<std::ptrdiff_t>(anyOf(replies, dice)));
    }
}

void repeatReply(std::vector<std::string>& replies, Dice& dice)
{
    const std::string copy = replies[anyOf(replies, dice)];
    replies.insert(replies.begin() + static_cast<std::ptrdiff_t>(anyOf(replies, dice)), copy);
}

void swapReplies(std::vector<std::string>& replies, Dice& dice)
{
    std::swap(replies[anyOf(replies, dice)], replies[anyOf(replies, dice)]);
}

void changeReply(std::vector<std::string>& replies, Dice& dice)
{
    std::string& changed = replies[anyOf(replies, dice)];
    switch (dice.below(4)) {
    case 0: // another code
        if (changed.size() > 3) {
            changed[dice.below(3)] = static_cast<char>('0' + dice.below(10));
        }
        break;
    case 1: // one more reply in the same piece
        changed += changed == "*" ? "" : escaped(reply(dice));
        break;
    case 2: // cut off
        changed.resize(dice.below(changed.size() + 1));
        break;
    default: // TLS begins, or does not
        if (!changed.empty() && changed.back() == '!') {
            changed.pop_back();
        } else if (changed != "*") {
            changed += "!";
        }
    }
}

void changeContents(std::vector<std::string>& contents, Dice& dice)
{
    const std::size_t at = anyOf(contents, dice);
    if (contents.empty() || dice.onceIn(6)) {
        contents.push_back(escaped(content(dice)));
    } else if (dice.onceIn(4)) {
        contents.erase(contents.begin() + static_cast<std::ptrdiff_t>(at));
    } else if (dice.onceIn(3) && contents[at].compare(0, 1, "!") == 0) {
        contents[at].erase(0, 1);
    } else if (dice.onceIn(3)) {
        contents[at].insert(0, "!");
    } else {
        contents[at] = escaped(content(dice));
    }
}

} // namespace

Script script(Dice& dice)
{
    Script script("");
    script.replies.clear();
    const bool tls = dice.onceIn(3);
    if (tls) {
        script.replies = {"*", "234 go\r\n!"};
    }
    constexpr std::size_t kLongest = 24;
    const std::size_t good = dice.below(dice.onceIn(2) ? 4 : kLongest);
    script.replies.insert(script.replies.end(), good, "*");
    for (std::size_t left = dice.below(4); left > 0; --left) {
        script.replies.push_back(escaped(reply(dice)));
        script.replies.insert(script.replies.end(), dice.below(4), "*");
    }
    if (script.replies.empty() || !dice.onceIn(3)) {
        script.replies.emplace_back("*");
    }
    for (std::size_t left = dice.below(4); left > 0; --left) {
        const std::string made = escaped(content(dice));
        script.contents.push_back(tls && made.compare(0, 1, "!") != 0 ? "!" + made : made);
    }
    return script;
}

void mutate(Script& script, Dice& dice)
{
    if (dice.onceIn(4)) {
        changeContents(script.contents, dice);
        return;
    }
    using Change = void (*)(std::vector<std::string>&, Dice&);
    static const std::vector<Change> changes = {replaceReply, replaceReply, insertReply, eraseReply,
                                                repeatReply,  swapReplies,  changeReply};
    dice.among(changes)(script.replies, dice);
}

Script crossed(const Script& first, const Script& second, Dice& dice)
{
    Script made = first;
    made.replies.resize(1 + dice.below(first.replies.size()));
    const std::size_t from = anyOf(second.replies, dice);
    made.replies.insert(made.replies.end(), second.replies.begin() + static_cast<std::ptrdiff_t>(from),
                        second.replies.end());
    if (dice.onceIn(2)) {
        made.contents = second.contents;
    }
    return made;
}

} // namespace grammar
