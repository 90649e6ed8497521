#include "harness/TextFile.h"

#include <base/InputFile.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

using namespace std::chrono_literals;

namespace {

// What is read of at most ten bytes, or why not.
std::string read(const std::string& path)
{
    std::string text;
    const std::string reason = InputFile(path).readWhole(10, text, 0ms);
    return reason.empty() ? text : "not: " + reason;
}

/// A pipe in a folder of its own.
class NamedPipe
{
public:
    NamedPipe()
    {
        EXPECT_NE(mkdtemp(m_folder), nullptr);
        EXPECT_EQ(mkfifo(path().c_str(), 0644), 0);
    }
    ~NamedPipe()
    {
        unlink(path().c_str());
        rmdir(m_folder);
    }
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;

    std::string path() const { return std::string(m_folder) + "/pipe"; }

private:
    char m_folder[32] = "/tmp/sftpclient-pipe-XXXXXX";
};

// Else a pipe that nobody writes to would hold the test for ever.
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

TEST(InputFile, IsReadToItsEnd)
{
    EXPECT_EQ(read(TextFile("").path()), "");
    EXPECT_EQ(read(TextFile("0123456789").path()), "0123456789");
    EXPECT_EQ(read("/nowhere/file"), "not: No such file or directory");
    EXPECT_EQ(read("/"), "not: Is a directory");
}

TEST(InputFile, IsBounded)
{
    EXPECT_EQ(read(TextFile("0123456789a").path()), "not: it is larger than 0 KiB");
    EXPECT_EQ(read("/dev/zero"), "not: it is larger than 0 KiB");
}

TEST(InputFile, DoesNotWaitForever)
{
    ASSERT_TRUE(isOpenedWithoutWaiting());
    const NamedPipe pipe;
    EXPECT_EQ(read(pipe.path()), "not: nothing came for 0 s");
}

TEST(InputFile, MayBeAPipe)
{
    ASSERT_TRUE(isOpenedWithoutWaiting());
    const NamedPipe pipe;
    const InputFile file(pipe.path());
    std::thread writer([&pipe] { TextFile::writeTo(pipe.path(), "contents"); });
    std::string text;
    EXPECT_EQ(file.readWhole(10, text), "");
    EXPECT_EQ(text, "contents");
    writer.join();
}

TEST(InputFile, HasAWarningWhereOthersCanReadIt)
{
    ASSERT_TRUE(isOpenedWithoutWaiting());
    const TextFile file("secret");
    const std::string warning = "sftpclient: warning: others than its owner can read the secret " + file.path() +
                                "; run: chmod 600 " + file.path() + "\n";
    for (const mode_t mode : {0600U, 0400U, 0622U, 0711U}) {
        chmod(file.path().c_str(), mode);
        EXPECT_EQ(warningAbout(file.path()), "") << mode;
    }
    for (const mode_t mode : {0640U, 0604U, 0644U}) {
        chmod(file.path().c_str(), mode);
        EXPECT_EQ(warningAbout(file.path()), warning) << mode;
    }
    EXPECT_EQ(warningAbout(NamedPipe().path()), "");
    EXPECT_EQ(warningAbout("/nowhere/file"), "");
}
