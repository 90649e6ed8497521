#include "harness/AfterFirstBlock.h"
#include "harness/Disk.h"

#include "support/RandomBytes.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

// What an upload sends if its local file changes after the first block has been read.
class ChangingFiles : public Disk
{
protected:
    ChangingFiles()
    {
        writeFile(request.localPath, content);
        serve();
    }

    std::string uploadWhile(const std::function<void()>& happening)
    {
        const AfterFirstBlock after(happening);
        std::string result = upload();
        EXPECT_TRUE(after.hasHappened());
        return result;
    }

    void expectEndedTooEarly(std::size_t bytes)
    {
        EXPECT_EQ(tooShortText(), errorText);
        EXPECT_TRUE(sameBytes(content.substr(0, bytes), contentOf(served("sent.bak"))));
        EXPECT_TRUE(sameLines(uploadNotWhole(), live::takeRecords()));
    }

    const std::string content = randomBytes(1000000);
};

TEST_F(ChangingFiles, ARemovedFileIsStillSent)
{
    EXPECT_EQ("CURLE_OK", uploadWhile([this] { fs::remove(request.localPath); }));
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(request.localPath));
    EXPECT_TRUE(sameBytes(content, contentOf(served("sent.bak"))));
    EXPECT_TRUE(sameLines(Lines{}, live::takeRecords()));
}

TEST_F(ChangingFiles, AReplacedFileIsSentAsItWas)
{
    EXPECT_EQ("CURLE_OK", uploadWhile([this] {
                  writeFile(local("other"), std::string(content.size(), 'x'));
                  fs::rename(local("other"), request.localPath);
              }));
    EXPECT_TRUE(sameBytes(content, contentOf(served("sent.bak"))));
}

TEST_F(ChangingFiles, ATruncatedFileIsSentUpToItsNewEnd)
{
    EXPECT_EQ(tooShort(), uploadWhile([this] { fs::resize_file(request.localPath, 300000); }));
    expectEndedTooEarly(300000);
}

TEST_F(ChangingFiles, OnlyTheFirstBlockOfAnEmptiedFileIsSent)
{
    constexpr std::size_t kBlock = 65536; // libcurl's upload buffer
    EXPECT_EQ(tooShort(), uploadWhile([this] { fs::resize_file(request.localPath, 0); }));
    expectEndedTooEarly(kBlock);
}

} // namespace
