#include "harness/TextFile.h"

#include <base/UsageError.h>
#include <base/WipedAtEnd.h>
#include <credentials/Password.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string passwordFrom(const std::string& contents)
{
    const TextFile file(contents);
    std::string password;
    readPasswordFile(file.path(), password);
    return password;
}

std::string refusalOfFile(const std::string& path)
{
    std::string password;
    try {
        readPasswordFile(path, password, std::chrono::milliseconds(0));
    } catch (const UsageError& error) {
        return error.what();
    }
    return "taken";
}

std::string refusalOf(const std::string& contents) { return refusalOfFile(TextFile(contents).path()); }

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
    for (const std::string more : {"y", "yz"}) {
        const TextFile file(longest + more);
        EXPECT_EQ(refusalOfFile(file.path()),
                  "The password in " + file.path() + " must not be longer than 1023 bytes.");
    }
    EXPECT_EQ(refusalOfFile("/dev/zero"), "The password in /dev/zero must not be longer than 1023 bytes.");
}

TEST(Password, IsMissingFromAnEmptyOrUnreadableFile)
{
    EXPECT_EQ(refusalOf("").find("The password file "), 0U);
    EXPECT_EQ(refusalOfFile("/nowhere/password"),
              "The password file /nowhere/password cannot be read (No such file or directory): name one that can be.");
}

TEST(Password, DoesNotComeFromAPipeThatNobodyWritesTo)
{
    const std::string pipe = testing::TempDir() + "sftpclient-pipe-" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(refusalOfFile(pipe), "The password file " + pipe + " is empty: write the password into its first line.");
    unlink(pipe.c_str());
}

TEST(Password, HasAWarningWhereOthersCanReadItsFile)
{
    const TextFile file("secret\n");
    ASSERT_EQ(chmod(file.path().c_str(), 0640), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(refusalOfFile(file.path()), "taken");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "sftpclient: warning: others than its owner can read the password "
              "file " +
                  file.path() + "; run: chmod 600 " + file.path() + "\n");
}

TEST(WipedAtEnd, OverwritesTheText)
{
    std::string password = "a password that is longer than a short string";
    {
        const WipedAtEnd wiped(password);
    }
    EXPECT_EQ(password, std::string(45, '\0'));
}
