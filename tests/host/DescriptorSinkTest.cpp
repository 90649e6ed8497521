#include "support/FileSizeLimit.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <DescriptorSink.h>

#include <gtest/gtest.h>

#include <fcntl.h>

#include <array>
#include <csignal>
#include <string>
#include <system_error>
#include <thread>

namespace {

int failureOf(DescriptorSink& sink, const std::string& line)
{
    try {
        sink.write(line);
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return 0;
}

volatile std::sig_atomic_t signalsThatArrived = 0;

class DescriptorSinkTest : public testing::Test
{
protected:
    DescriptorSinkTest()
    {
        EXPECT_EQ(0, pipe2(m_ends.data(), O_CLOEXEC));
        m_sink.setDescriptor(m_ends[1]);
    }
    ~DescriptorSinkTest() override
    {
        closeEnd(0);
        closeEnd(1);
    }

    void closeEnd(std::size_t end)
    {
        if (m_ends[end] >= 0) {
            close(m_ends[end]);
            m_ends[end] = -1;
        }
    }

    std::array<int, 2> m_ends = {-1, -1};
    DescriptorSink m_sink;
};

TEST_F(DescriptorSinkTest, SurvivesAPipeThatNobodyReads)
{
    closeEnd(0);
    EXPECT_EQ(EPIPE, failureOf(m_sink, "lost\n"));
    sigset_t pending = {};
    sigpending(&pending);
    EXPECT_EQ(0, sigismember(&pending, SIGPIPE));
    sigset_t blocked = {};
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(0, sigismember(&blocked, SIGPIPE));
}

// Standard error may be a file.
TEST_F(DescriptorSinkTest, SurvivesAFileThatMayNotGrow)
{
    const TemporaryFolder folder;
    const int file = open(folder.file("log").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    m_sink.setDescriptor(file);
    {
        const FileSizeLimit limit(1);
        static_cast<void>(std::signal(SIGXFSZ, [](int) { signalsThatArrived = signalsThatArrived + 1; }));
        EXPECT_EQ(EFBIG, failureOf(m_sink, "lost\n"));
    }
    close(file);
    EXPECT_EQ(0, signalsThatArrived);
}

TEST_F(DescriptorSinkTest, LeavesASignalPendingThatTheHostBlocks)
{
    sigset_t sigpipe = {};
    sigemptyset(&sigpipe);
    sigaddset(&sigpipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr);
    closeEnd(0);
    EXPECT_EQ(EPIPE, failureOf(m_sink, "lost\n"));
    const timespec atOnce = {};
    EXPECT_EQ(SIGPIPE, sigtimedwait(&sigpipe, nullptr, &atOnce));
    pthread_sigmask(SIG_UNBLOCK, &sigpipe, nullptr);
}

TEST_F(DescriptorSinkTest, WaitsForRoomInAPipeThatDoesNotBlock)
{
    ASSERT_EQ(0, fcntl(m_ends[1], F_SETFL, O_NONBLOCK));
    const std::string line = std::string(1000000, 'x') + "\n";
    std::string read;
    std::thread reader([this, &read] {
        std::array<char, 1000> block = {};
        for (ssize_t count = 0; (count = ::read(m_ends[0], block.data(), block.size())) > 0;) {
            read.append(block.data(), static_cast<std::size_t>(count));
        }
    });
    EXPECT_EQ(0, failureOf(m_sink, line));
    closeEnd(1);
    reader.join();
    EXPECT_TRUE(read == line);
}

TEST_F(DescriptorSinkTest, ReportsAClosedDescriptor)
{
    const int number = m_ends[1];
    closeEnd(1);
    EXPECT_EQ("descriptor " + std::to_string(number) + ": Bad file descriptor",
              thrownBy([this] { m_sink.write("lost\n"); }));
}

TEST_F(DescriptorSinkTest, BeginsANewLineAfterATornOne)
{
    const TemporaryFolder folder;
    const std::string path = folder.file("log");
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ASSERT_GE(descriptor, 0);
    m_sink.setDescriptor(descriptor);
    {
        const FileSizeLimit full(6);
        EXPECT_EQ(0, failureOf(m_sink, "1st\n"));
        EXPECT_EQ(EFBIG, failureOf(m_sink, "2nd\n"));
        EXPECT_EQ(EFBIG, failureOf(m_sink, "3rd\n"));
    }
    EXPECT_EQ(0, failureOf(m_sink, "4th\n"));
    EXPECT_EQ(0, failureOf(m_sink, "5th\n"));
    close(descriptor);
    EXPECT_EQ("1st\n2n\n4th\n5th\n", contentOf(path));
}

} // namespace
