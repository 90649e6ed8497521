#include "harness/AfterFirstBlock.h"
#include "harness/Disk.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

// What becomes of an upload whose local file changes when its first block has been read.
class ChangingFiles : public Disk
{
protected:
    ChangingFiles()
    {
        for (unsigned i = 0; content.size() < 1000000; ++i) {
            content += std::to_string(i) + " ";
        }
        writeFile(request.localPath, content);
        serve();
    }

    int uploadWhile(const std::function<void()>& happening)
    {
        const AfterFirstBlock after(happening);
        const int result = upload();
        EXPECT_TRUE(after.hasHappened());
        return result;
    }

    void expectEndedTooEarly(std::size_t bytes)
    {
        EXPECT_EQ(kPartial, errorText);
        EXPECT_TRUE(content.substr(0, bytes) == contentOf(served("sent.bak")))
            << contentOf(served("sent.bak")).size() << " bytes";
        EXPECT_EQ(uploadNotWhole(), live::takeRecords());
    }

    std::string content;
};

TEST_F(ChangingFiles, ARemovedFileIsSentAllTheSame)
{
    EXPECT_EQ(0, uploadWhile([this] { fs::remove(request.localPath); }));
    EXPECT_EQ("as it was", errorText);
    EXPECT_FALSE(exists(request.localPath));
    EXPECT_TRUE(content == contentOf(served("sent.bak")));
    EXPECT_EQ(Lines{}, live::takeRecords());
}

TEST_F(ChangingFiles, AReplacedFileIsSentAsItWas)
{
    EXPECT_EQ(0, uploadWhile([this] {
                  writeFile(local("other"), std::string(content.size(), 'x'));
                  fs::rename(local("other"), request.localPath);
              }));
    EXPECT_TRUE(content == contentOf(served("sent.bak")));
}

TEST_F(ChangingFiles, ATruncatedFileIsSentAsFarAsItGoes)
{
    EXPECT_EQ(18, uploadWhile([this] { fs::resize_file(request.localPath, 300000); }));
    expectEndedTooEarly(300000);
}

TEST_F(ChangingFiles, OfAnEmptiedFileTheFirstBlockIsSent)
{
    constexpr std::size_t kBlock = 65536; // libcurl's upload buffer
    EXPECT_EQ(18, uploadWhile([this] { fs::resize_file(request.localPath, 0); }));
    expectEndedTooEarly(kBlock);
}

} // namespace
