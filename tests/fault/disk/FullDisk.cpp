#include "harness/Disk.h"
#include "support/FileSizeLimit.h"

#include <ostream>

namespace {

// A disk with room for so many bytes more: a limit of the process on the size of its files, because it is exact to the
// byte and needs no rights, whereas a small file system is mounted by root and counts in pages. To a write both look
// alike: it writes what there is room for, and the next one fails.
struct Room
{
    const char* name;
    std::size_t content;
    std::size_t bytes;
};

std::ostream& operator<<(std::ostream& stream, const Room& room) { return stream << room.name; }

class FullDisk : public Disk, public testing::WithParamInterface<Room>
{
};

const Lines kTls = {"1 sftpSetCertTmp(): Establish SSL with cert"};

Lines measured(std::size_t size)
{
    return {"1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =" + std::to_string(size) +
            ", fileSizeLimit = 53687091200"};
}

TEST_P(FullDisk, StopsADownload)
{
    const std::string content(GetParam().content, 'x');
    writeFile(served("a.bak"), content);
    serve();
    {
        const FileSizeLimit limit(GetParam().bytes);
        EXPECT_EQ("CURLE_WRITE_ERROR", download());
    }
    EXPECT_EQ(kNotWritten, errorText);
    EXPECT_TRUE(sameBytes(content.substr(0, GetParam().bytes), contentOf(request.localPath)));
    EXPECT_TRUE(sameLines(measured(content.size()) + kTls +
                              downloadFailed("DownLoadSFtpFile() list dir failed.code:23", kNotWritten),
                          live::takeRecords()));
}

TEST_P(FullDisk, StopsAListing)
{
    // Names of 10 bytes, with their line ends.
    std::string names;
    for (std::size_t i = 0; names.size() < GetParam().content; ++i) {
        const std::string name = "f" + std::to_string(10000000 + i);
        writeFile(served(name), "");
        names += name + "\n";
    }
    serve();
    {
        const FileSizeLimit limit(GetParam().bytes);
        EXPECT_EQ("CURLE_WRITE_ERROR", list());
    }
    EXPECT_EQ(kNotWritten, errorText);
    EXPECT_EQ(names.substr(0, GetParam().bytes), contentOf(request.localPath));
    EXPECT_TRUE(
        sameLines(kTls + listFailed("Listsftpdir() list dir failed.code:23", kNotWritten), live::takeRecords()));
}

INSTANTIATE_TEST_SUITE_P(At, FullDisk,
                         testing::Values(Room{"TheFirstBlock", 5000, 0}, Room{"AByteInTheFirstBlock", 5000, 1},
                                         Room{"TheEndOfABlock", 20000, 16384}, Room{"TheLastByte", 20000, 19999}),
                         [](const testing::TestParamInfo<Room>& parameter) { return parameter.param.name; });

class DiskRoom : public Disk
{
};

TEST_F(DiskRoom, CanBeUsedToTheLastByte)
{
    const std::string content(40000, 'x');
    writeFile(served("a.bak"), content);
    serve();
    {
        const FileSizeLimit limit(content.size());
        EXPECT_EQ("CURLE_OK", download());
    }
    EXPECT_EQ("as it was", errorText);
    EXPECT_TRUE(sameBytes(content, contentOf(request.localPath)));
}

// /dev/full returns the error of a full disk.
TEST_F(DiskRoom, StopsADownloadAndAListingIfThereIsNone)
{
    writeFile(served("a.bak"), "the content");
    request.localPath = "/dev/full";
    serve();
    EXPECT_EQ("CURLE_WRITE_ERROR", download());
    EXPECT_EQ(kNotWritten, errorText);
    EXPECT_TRUE(
        sameLines(measured(11) + kTls + downloadFailed("DownLoadSFtpFile() list dir failed.code:23", kNotWritten),
                  live::takeRecords()));
    EXPECT_EQ("CURLE_WRITE_ERROR", list());
    EXPECT_TRUE(
        sameLines(kTls + listFailed("Listsftpdir() list dir failed.code:23", kNotWritten), live::takeRecords()));
}

TEST_F(DiskRoom, IsNotNeededForAnEmptyFile)
{
    writeFile(served("a.bak"), "");
    writeFile(request.localPath, "an old file");
    serve();
    const FileSizeLimit limit(0);
    EXPECT_EQ("CURLE_OK", download());
    EXPECT_EQ("", contentOf(request.localPath));
}

} // namespace
