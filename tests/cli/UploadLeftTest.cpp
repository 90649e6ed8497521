// What an interruption of an upload over SSH has left, where no command is to be seen.
#include "support/TemporaryFolder.h"

#include <operation/SessionRun.h>

#include <gtest/gtest.h>

namespace {

constexpr char kUnknown[] =
    "whether the server has the new file is not known: it, or the old one, may be under another name beside it";

class UploadLeft : public testing::Test
{
protected:
    UploadLeft() { m_arguments.operation = Operation::Put; }

    std::string leftAfter(std::int64_t bytes)
    {
        SFtpRequest request;
        request.localPath = m_folder.write("file", "contents");
        SessionWatch watch(nullptr);
        const SessionRun run(m_arguments, request, m_options, watch, nullptr, [](const std::string&) {});
        Result result;
        result.bytes = bytes;
        return run.whatIsLeft(result);
    }

    Arguments m_arguments;
    SessionOptions m_options;
    TemporaryFolder m_folder;
};

} // namespace

TEST_F(UploadLeft, IsUnknownOnceAllWasSentOverSsh)
{
    m_arguments.remote = RemoteUrl("sftp://host/file");
    EXPECT_EQ("nothing was sent", leftAfter(0));
    EXPECT_EQ("the server has the file as it was, and may hold a part of the new one beside it", leftAfter(7));
    EXPECT_EQ(kUnknown, leftAfter(8));
}

// Where it has begun is not to be seen.
TEST_F(UploadLeft, IsUnknownIfItWasResumedOverSsh)
{
    m_arguments.remote = RemoteUrl("sftp://host/file");
    m_options.resume = true;
    EXPECT_EQ(kUnknown, leftAfter(7));
}

TEST_F(UploadLeft, IsKnownByTheCommandsOverFtp)
{
    m_arguments.remote = RemoteUrl("ftps://host/file");
    m_options.resume = true;
    EXPECT_EQ("the server has the file as it was, and may hold a part of the new one beside it", leftAfter(8));
}
