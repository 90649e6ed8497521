
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

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
    return thrownBy<UsageError>([&] { readPasswordFile(path, password, std::chrono::milliseconds(0)); });
}

std::string refusalOf(const std::string& contents) { return refusalOfFile(TextFile(contents).path()); }

} // namespace

TEST(Password, IsTheFirstLineOfTheFileWithoutItsLineEnd)
{
    EXPECT_EQ("secret", passwordFrom("secret\nnot this\n"));
    EXPECT_EQ("secret", passwordFrom("secret\r\nnot this\r\n"));
    EXPECT_EQ("secret", passwordFrom("secret"));
    EXPECT_EQ(" s:e cret ", passwordFrom(" s:e cret \n"));
    EXPECT_EQ("", passwordFrom("\nnot this\n"));
}

TEST(Password, HasAMaximumLength)
{
    const std::string longest(kLongestPassword, 'x');
    EXPECT_EQ(longest, passwordFrom(longest));
    EXPECT_EQ(longest, passwordFrom(longest + "\r\n"));
    for (const std::string more : {"y", "yz"}) {
        SCOPED_TRACE(more);
        const TextFile file(longest + more);
        EXPECT_EQ("The password in " + file.path() + " must not be longer than 1023 bytes.",
                  refusalOfFile(file.path()));
    }
    EXPECT_EQ("The password in /dev/zero must not be longer than 1023 bytes.", refusalOfFile("/dev/zero"));
}

TEST(Password, IsMissingFromAnEmptyOrUnreadableFile)
{
    EXPECT_EQ(0U, refusalOf("").find("The password file "));
    EXPECT_EQ("The password file /nowhere/password cannot be read (No such file or directory): name one that can be.",
              refusalOfFile("/nowhere/password"));
}

TEST(Password, IsNotReadFromAPipeWithoutAWriter)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    EXPECT_EQ("The password file " + pipe + " is empty: write the password into its first line.", refusalOfFile(pipe));
}

TEST(Password, CausesAWarningIfOthersCanReadItsFile)
{
    const TextFile file("secret\n");
    ASSERT_EQ(0, chmod(file.path().c_str(), 0640));
    testing::internal::CaptureStderr();
    EXPECT_EQ(kNothingThrown, refusalOfFile(file.path()));
    EXPECT_EQ("sftpclient: warning: others than its owner can read the password "
              "file " +
                  file.path() + "; run: chmod 600 " + file.path() + "\n",
              testing::internal::GetCapturedStderr());
}

TEST(WipedAtEnd, OverwritesTheText)
{
    std::string password = "a password that is longer than a short string";
    {
        const WipedAtEnd wiped(password);
    }
    EXPECT_EQ(std::string(45, '\0'), password);
}
