#include "harness/TextFile.h"

#include <usage/Commands.h>
#include <usage/Options.h>

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

std::set<std::string> found(const std::string& text, const std::string& pattern)
{
    const std::regex expression(pattern);
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), expression); match != std::sregex_iterator(); ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

} // namespace

TEST(ManPage, HasEveryOptionAndNoOther)
{
    std::set<std::string> known{"--help", "--version"};
    for (const Option& option : options()) {
        known.insert(option.name);
    }
    std::set<std::string> described;
    for (const std::string& name : found(contentsOf(SFTPCLIENT_MAN_PAGE), "\n\\.It Fl (?:h , )?-([a-z-]+)")) {
        described.insert("--" + name);
    }
    EXPECT_EQ(described, known);
}

TEST(ManPage, HasEveryOperationAndNoOther)
{
    std::set<std::string> known;
    for (const Command& command : commands()) {
        known.insert(command.name);
    }
    EXPECT_EQ(found(contentsOf(SFTPCLIENT_MAN_PAGE), "\n\\.It Cm ([a-z]+)"), known);
    EXPECT_EQ(found(contentsOf(SFTPCLIENT_MAN_PAGE), "\n\\.Nm\n\\.Cm ([a-z]+)"), known);
}
