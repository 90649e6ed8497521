#include "RealServer.h"

#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <future>
#include <iterator>

namespace {

// What is uploaded over SSH and is no regular file: it tells no size, and there libcurl goes by the size.
class SourcesOverSsh : public RealServer
{
protected:
    std::size_t uploaded(const std::string& source, const std::string& name)
    {
        aimAt(name);
        request.localPath = source;
        EXPECT_EQ(0, facade.UploadFileToSFtpServer(request, errorText));
        return contentOf(served(name)).size();
    }

    static constexpr std::size_t kFirstBlock = 65536; // libcurl's upload buffer
};

std::vector<Server> thoseWithSsh()
{
    std::vector<Server> those;
    std::copy_if(servers().begin(), servers().end(), std::back_inserter(those),
                 [](const Server& each) { return each.scheme == "sftp"; });
    return those;
}

TEST_P(SourcesOverSsh, OfAPipeTheFirstBlockIsSentAndTheResultIsZero)
{
    const auto before = std::signal(SIGPIPE, SIG_IGN); // the pipe is left before its end
    const std::string pipe = local("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const std::future<void> writer =
        std::async(std::launch::async, [&] { std::ofstream(pipe, std::ios::binary) << std::string(600000, 'x'); });
    EXPECT_EQ(kFirstBlock, uploaded(pipe, "pipe.bak"));
    writer.wait();
    std::signal(SIGPIPE, before);
}

TEST_P(SourcesOverSsh, OfADeviceTooWhateverItHolds)
{
    EXPECT_EQ(kFirstBlock, uploaded("/dev/zero", "zero.bak"));
    EXPECT_EQ(0U, uploaded("/dev/null", "null.bak"));
}

INSTANTIATE_TEST_SUITE_P(OfDebian, SourcesOverSsh, testing::ValuesIn(thoseWithSsh()), idOf);

} // namespace
