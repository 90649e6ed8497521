#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <DescriptorSink.h>
#include <LogFile.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <limits>
#include <string>
#include <system_error>

namespace {

/// What the next calls come to: an error, or at most so many bytes.
struct Outcome
{
    int error;
    std::size_t bytes = 0;
};

std::deque<Outcome> nextWrites;
std::deque<int> nextPollErrors;

Outcome takeFirst(std::deque<Outcome>& outcomes)
{
    if (outcomes.empty()) {
        return {0, std::numeric_limits<std::size_t>::max()};
    }
    const Outcome first = outcomes.front();
    outcomes.pop_front();
    return first;
}

} // namespace

// In the system's place, which cannot be made to interrupt a call at a certain moment.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t count)
{
    const Outcome outcome = takeFirst(nextWrites);
    errno = outcome.error;
    return outcome.error != 0 ? -1 : syscall(SYS_write, descriptor, bytes, std::min(count, outcome.bytes));
}

extern "C" int poll(pollfd* /*descriptors*/, nfds_t /*count*/, int /*milliseconds*/)
{
    errno = nextPollErrors.empty() ? 0 : nextPollErrors.front();
    if (errno == 0) {
        return 1;
    }
    nextPollErrors.pop_front();
    return -1;
}

// What Debian 13's headers make of it for clang.
extern "C" int __poll_chk(pollfd* descriptors, nfds_t count, int milliseconds, std::size_t /*size*/)
{
    return poll(descriptors, count, milliseconds);
}

namespace {

class InterruptedWrite : public testing::Test
{
protected:
    ~InterruptedWrite() override
    {
        EXPECT_TRUE(nextWrites.empty());
        EXPECT_TRUE(nextPollErrors.empty());
    }

    TemporaryFolder m_folder;
    std::string m_path = m_folder.file("a.log");
};

class InterruptedDescriptor : public InterruptedWrite
{
protected:
    InterruptedDescriptor() { m_sink.setDescriptor(m_descriptor); }
    ~InterruptedDescriptor() override { close(m_descriptor); }

    int m_descriptor = open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    DescriptorSink m_sink;
};

TEST_F(InterruptedWrite, ToAFileContinues)
{
    LogFile file(m_path, 1000, 2);
    nextWrites = {{EINTR}, {0, 2}, {EINTR}, {0, 1}};
    file.write("a line\n");
    EXPECT_EQ("a line\n", contentOf(m_path));
}

TEST_F(InterruptedWrite, ToAFileLeavesNothingWhenItFailsAfterwards)
{
    LogFile file(m_path, 1000, 2);
    file.write("1st\n");
    nextWrites = {{0, 2}, {EIO}};
    EXPECT_EQ(m_path + ": Input/output error", thrownBy([&] { file.write("2nd\n"); }));
    EXPECT_EQ("1st\n", contentOf(m_path));
}

TEST_F(InterruptedDescriptor, IsWrittenCompletely)
{
    nextWrites = {{EINTR}, {0, 2}, {EAGAIN}, {EAGAIN}, {0, 1}};
    nextPollErrors = {EINTR};
    m_sink.write("a line\n");
    EXPECT_EQ("a line\n", contentOf(m_path));
}

TEST_F(InterruptedDescriptor, FailsIfItCannotWait)
{
    nextWrites = {{EAGAIN}};
    nextPollErrors = {EINVAL};
    EXPECT_THROW(m_sink.write("a line\n"), std::system_error);
    EXPECT_EQ("", contentOf(m_path));
}

} // namespace
