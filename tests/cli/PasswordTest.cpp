#include "harness/TextFile.h"

#include <UsageError.h>
#include <credentials/Password.h>

#include <gtest/gtest.h>

namespace {

std::string passwordFrom(const std::string& contents)
{
    const TextFile file(contents);
    std::string password;
    readPasswordFile(file.path(), password);
    return password;
}

std::string refusalOf(const std::string& contents)
{
    try {
        passwordFrom(contents);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "taken";
}

} // namespace

TEST(Password, IsTheFirstLineOfTheFileWithoutItsEnd)
{
    EXPECT_EQ(passwordFrom("secret\nnot this\n"), "secret");
    EXPECT_EQ(passwordFrom("secret\r\nnot this\r\n"), "secret");
    EXPECT_EQ(passwordFrom("secret"), "secret");
    EXPECT_EQ(passwordFrom(" s:e cret \n"), " s:e cret ");
    EXPECT_EQ(passwordFrom("\nnot this\n"), "");
}

TEST(Password, HasALongestLength)
{
    const std::string longest(kLongestPassword, 'x');
    EXPECT_EQ(passwordFrom(longest), longest);
    EXPECT_EQ(passwordFrom(longest + "\r\n"), longest);
    EXPECT_EQ(refusalOf(longest + "y"), "The password must not be longer than 1023 bytes.");
    EXPECT_EQ(refusalOf(longest + "yz"), "The password must not be longer than 1023 bytes.");
}

TEST(Password, IsMissingFromAnEmptyOrUnreadableFile)
{
    EXPECT_EQ(refusalOf("").find("The password file "), 0U);
    std::string password;
    try {
        readPasswordFile("/nowhere/password", password);
        FAIL() << "taken";
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "The password file /nowhere/password cannot be read (No such file or directory): "
                                   "name one that can be.");
    }
}

TEST(WipedAtEnd, OverwritesTheText)
{
    std::string password = "a password that is longer than a short string";
    {
        const WipedAtEnd wiped(password);
    }
    EXPECT_EQ(password, std::string(45, '\0'));
}
