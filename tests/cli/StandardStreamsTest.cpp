#include <output/StandardStreams.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>

TEST(Silenced, DiscardsBufferedOutput)
{
    testing::internal::CaptureStdout();
    std::printf("before ");
    {
        const Silenced silenced(STDOUT_FILENO);
        std::printf("never seen");
    }
    std::printf("after");
    EXPECT_EQ("before after", testing::internal::GetCapturedStdout());
}

TEST(Silenced, DiscardsWritesToTheDescriptor)
{
    testing::internal::CaptureStderr();
    {
        const Silenced silenced(STDERR_FILENO);
        EXPECT_EQ(10, write(STDERR_FILENO, "never seen", 10));
    }
    EXPECT_EQ(5, write(STDERR_FILENO, "after", 5));
    EXPECT_EQ("after", testing::internal::GetCapturedStderr());
}

// In a separate process, whose standard descriptors are closed.
TEST(OpenStandardDescriptorsDeathTest, FillsTheGaps)
{
    EXPECT_EXIT(
        {
            close(STDIN_FILENO);
            close(STDOUT_FILENO);
            openStandardDescriptors();
            const int next = dup(STDERR_FILENO);
            char byte = 'x';
            const bool filled = next > STDERR_FILENO;
            // As if they were still closed: input must not seem to be empty, nor output be lost silently.
            const bool refuses = read(STDIN_FILENO, &byte, 1) == -1 && write(STDOUT_FILENO, &byte, 1) == -1;
            _exit(filled && refuses ? 0 : 1);
        },
        testing::ExitedWithCode(0), "^$");
}
