
#include "support/TemporaryFolder.h"

#include <usage/Commands.h>
#include <usage/Options.h>

#include <gtest/gtest.h>

#include <set>

namespace {

// The words that follow `mark` in the page.
std::set<std::string> wordsAfter(const std::string& mark)
{
    const std::string page = contentOf(SFTPCLIENT_MAN_PAGE);
    std::set<std::string> words;
    for (std::string::size_type at = page.find(mark); at != std::string::npos; at = page.find(mark, at)) {
        at += mark.size();
        words.insert(page.substr(at, page.find_first_of(" \n", at) - at));
    }
    return words;
}

} // namespace

TEST(ManPage, ListsExactlyTheOptions)
{
    std::set<std::string> known{"--help", "--version"};
    for (const Option& option : options()) {
        known.insert(option.name);
    }
    std::set<std::string> described{"--help"};
    for (const std::string& name : wordsAfter("\n.It Fl -")) {
        described.insert("--" + name);
    }
    EXPECT_EQ(known, described);
    EXPECT_EQ(std::set<std::string>{"help"}, wordsAfter("\n.It Fl h , -"));
}

TEST(ManPage, ListsExactlyTheOperations)
{
    std::set<std::string> known;
    for (const Command& command : commands()) {
        known.insert(command.name);
    }
    EXPECT_EQ(known, wordsAfter("\n.It Cm "));
    EXPECT_EQ(known, wordsAfter("\n.Nm\n.Cm "));
}
