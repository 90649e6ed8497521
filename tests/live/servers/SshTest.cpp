#include "RealServer.h"
#include "harness/AfterFirstBlock.h"
#include "support/CurlRelease.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>

namespace {

// What differs with an sftp: URL. There libcurl ends an upload silently when the source has ended, or when it has
// sent the first block of one without a size.
class OverSsh : public RealServer
{
protected:
    std::size_t uploaded(const std::string& source, const std::string& name, int code = CURLE_OK)
    {
        aimAt(name);
        request.localPath = source;
        EXPECT_EQ(code, facade.UploadFileToSFtpServer(request, errorText));
        return contentOf(served(name)).size();
    }

    // From 8.14 on libcurl reports that the source cannot be read, or has fewer bytes than its size said.
    static int unread() { return isCurl814() ? CURLE_READ_ERROR : CURLE_OK; }

    static constexpr std::size_t kFirstBlock = 65536; // libcurl's upload buffer
};

// Sometimes more is sent, depending on timing; the rest is lost silently. From 8.14 on libcurl sends nothing of a
// source whose size is 0.
TEST_P(OverSsh, TheFirstBlockOfAPipeIsSentAndTheResultIsZero)
{
    const auto before = std::signal(SIGPIPE, SIG_IGN); // the pipe is left before its end
    const std::string pipe = local("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const std::future<void> writer =
        std::async(std::launch::async, [&] { std::ofstream(pipe, std::ios::binary) << std::string(600000, 'x'); });
    const std::size_t sent = uploaded(pipe, "pipe.bak");
    EXPECT_TRUE(isCurl814() ? sent == 0 : sent >= kFirstBlock) << sent;
    // A daemon that was started meanwhile has inherited the pipe: unread data would block the writer.
    const int rest = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    for (std::string block(65536, '\0'); writer.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready;) {
        static_cast<void>(read(rest, block.data(), block.size()) < 0);
    }
    close(rest);
    std::signal(SIGPIPE, before);
}

// /dev/zero is not tested: usually it is cut after the first block, but it can go on forever.
TEST_P(OverSsh, NothingOfAnEmptyDeviceIsSent) { EXPECT_EQ(0U, uploaded("/dev/null", "null.bak")); }

TEST_P(OverSsh, NothingOfAFolderIsSent) { EXPECT_EQ(0U, uploaded(local(""), "folder.bak", unread())); }

TEST_P(OverSsh, AShrinkingFileIsSentUpToItsNewEnd)
{
    writeFile(local("source"), std::string(600000, 'x'));
    const AfterFirstBlock after([this] { std::filesystem::resize_file(local("source"), 100000); });
    // With an error, libcurl drops what it has not sent yet.
    const std::size_t sent = uploaded(local("source"), "shorter.bak", unread());
    EXPECT_TRUE(isCurl814() ? sent <= 100000 : sent == 100000) << sent;
    EXPECT_TRUE(after.hasHappened());
}

TEST_P(OverSsh, TheSizeCheckPrintsNeitherPasswordNorHeaders)
{
    keep("fetched.bak", "content");
    aimAt("fetched.bak");
    EXPECT_TRUE(facade.CheckFileSizeBeforeDownload(request));
    EXPECT_EQ("", out->content());
    EXPECT_NE("", err->content());
    EXPECT_EQ(std::string::npos, err->content().find(request.password));
}

INSTANTIATE_TEST_SUITE_P(OfDebian, OverSsh, testing::ValuesIn(sshServers()), idOf);

} // namespace
