#include "harness/Disk.h"

#include "support/Process.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <future>
#include <utility>

namespace {

// A pipe as the local file. Both of its ends are open here, so that opening it does not wait.
class Pipes : public Disk
{
protected:
    Pipes()
    {
        request.localPath = local("pipe");
        EXPECT_EQ(0, mkfifo(request.localPath.c_str(), 0600));
        m_writer = open(request.localPath.c_str(), O_RDWR);
        m_reader = open(request.localPath.c_str(), O_RDONLY);
        EXPECT_LE(0, m_reader);
        serve();
    }

    ~Pipes() override
    {
        closeWriter();
        closeReader();
    }

    // Lets the reader see the end, once nobody else writes.
    void closeWriter() { static_cast<void>(::close(std::exchange(m_writer, -1))); }
    void closeReader() { static_cast<void>(::close(std::exchange(m_reader, -1))); }

    std::string readToTheEnd() const
    {
        std::string bytes;
        std::array<char, 4096> block = {};
        for (;;) {
            const ssize_t got = ::read(m_reader, block.data(), block.size());
            if (got <= 0) {
                return bytes;
            }
            bytes.append(block.data(), static_cast<std::size_t>(got));
        }
    }

private:
    int m_writer = -1;
    int m_reader = -1;
};

TEST_F(Pipes, AcceptADownload)
{
    // More than a pipe holds: it must be read meanwhile.
    const std::string content(300000, 'x');
    writeFile(served("a.bak"), content);
    std::future<std::string> taken = std::async(std::launch::async, [this] { return readToTheEnd(); });
    EXPECT_EQ("CURLE_OK", download());
    closeWriter();
    EXPECT_TRUE(sameBytes(content, taken.get()));
}

TEST_F(Pipes, AcceptAListing)
{
    writeFile(served("a.bak"), "");
    EXPECT_EQ("CURLE_OK", list());
    closeWriter();
    EXPECT_EQ("a.bak\n", readToTheEnd());
}

// A pipe has no size, so libcurl expects an empty file, and finds that it has sent more. The later one reads nothing.
TEST_F(Pipes, AreUploadedToTheEndAndReportedAsPartial)
{
    closeWriter();
    closeReader();
    const std::string content(300000, 'x');
    writeFile(local("content"), content);
    // A process of its own: its end of the pipe may be open for longer than the upload.
    const Process writer({{"dd", "if=" + local("content"), "of=" + request.localPath, "status=none"}});
    EXPECT_EQ(isCurl814() ? "CURLE_OK" : "CURLE_PARTIAL_FILE", upload());
    EXPECT_EQ(isCurl814() ? "as it was" : kPartial, errorText);
    EXPECT_TRUE(sameBytes(isCurl814() ? "" : content, contentOf(served("sent.bak"))));
    EXPECT_TRUE(sameLines(isCurl814() ? Lines{} : uploadNotWhole(), live::takeRecords()));
}

// Devices have no size either.
class Devices : public Disk
{
};

TEST_F(Devices, TheNullDeviceIsUploadedAsAnEmptyFile)
{
    serve();
    request.localPath = "/dev/null";
    EXPECT_EQ("CURLE_OK", upload());
    EXPECT_EQ("", contentOf(served("sent.bak")));
    EXPECT_TRUE(sameLines({}, live::takeRecords()));
}

TEST_F(Devices, AnEndlessDeviceIsUploadedAsLongAsTheServerAcceptsItOrNotAtAll)
{
    constexpr std::size_t kTaken = 8000000;
    misbehave("DATA=drop-after:" + std::to_string(kTaken));
    serve();
    request.localPath = "/dev/zero";
    EXPECT_EQ(isCurl814() ? "CURLE_OK" : "CURLE_SEND_ERROR", upload());
    EXPECT_TRUE(sameBytes(std::string(isCurl814() ? 0 : kTaken, '\0'), contentOf(served("sent.bak"))));
}

} // namespace
