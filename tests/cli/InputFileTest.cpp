
#include "support/TemporaryFolder.h"

#include <base/InputFile.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

using namespace std::chrono_literals;

namespace {

// What is read, at most ten bytes, or the error.
std::string read(const std::string& path)
{
    std::string text;
    const std::string reason = InputFile(path).readWhole(10, text, 0ms);
    return reason.empty() ? text : "not: " + reason;
}

/// A pipe in its own folder.
class NamedPipe
{
public:
    NamedPipe() { EXPECT_EQ(0, mkfifo(path().c_str(), 0644)); }

    std::string path() const { return m_folder.file("pipe"); }

private:
    TemporaryFolder m_folder;
};

// Otherwise a pipe without a writer would block the test forever.
bool isOpenedWithoutWaiting()
{
    const TextFile file("");
    return (fcntl(InputFile(file.path()).descriptor(), F_GETFL) & O_NONBLOCK) != 0;
}

std::string warningAbout(const std::string& path)
{
    testing::internal::CaptureStderr();
    InputFile(path).warnOfOtherReaders("the secret");
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(InputFile, IsReadToTheEnd)
{
    EXPECT_EQ("", read(TextFile("").path()));
    EXPECT_EQ("0123456789", read(TextFile("0123456789").path()));
    EXPECT_EQ("not: No such file or directory", read("/nowhere/file"));
    EXPECT_EQ("not: Is a directory", read("/"));
}

TEST(InputFile, IsBounded)
{
    EXPECT_EQ("not: it is larger than 0 KiB", read(TextFile("0123456789a").path()));
    EXPECT_EQ("not: it is larger than 0 KiB", read("/dev/zero"));
}

TEST(InputFile, DoesNotWaitForever)
{
    ASSERT_TRUE(isOpenedWithoutWaiting());
    const NamedPipe pipe;
    EXPECT_EQ("not: nothing came for 0 s", read(pipe.path()));
}

TEST(InputFile, MayBeAPipe)
{
    ASSERT_TRUE(isOpenedWithoutWaiting());
    const NamedPipe pipe;
    const InputFile file(pipe.path());
    std::thread writer([&pipe] { writeFile(pipe.path(), "contents"); });
    std::string text;
    EXPECT_EQ("", file.readWhole(10, text));
    EXPECT_EQ("contents", text);
    writer.join();
}

TEST(InputFile, CausesAWarningIfOthersCanReadIt)
{
    ASSERT_TRUE(isOpenedWithoutWaiting());
    const TextFile file("secret");
    const std::string warning = "sftpclient: warning: others than its owner can read the secret " + file.path() +
                                "; run: chmod 600 " + file.path() + "\n";
    for (const mode_t mode : {0600U, 0400U, 0622U, 0711U}) {
        chmod(file.path().c_str(), mode);
        EXPECT_EQ("", warningAbout(file.path())) << mode;
    }
    for (const mode_t mode : {0640U, 0604U, 0644U}) {
        chmod(file.path().c_str(), mode);
        EXPECT_EQ(warning, warningAbout(file.path())) << mode;
    }
    EXPECT_EQ("", warningAbout(NamedPipe().path()));
    EXPECT_EQ("", warningAbout("/nowhere/file"));
}
