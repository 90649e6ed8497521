#include "harness/Disk.h"
#include "support/OtherUser.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

const Lines kMeasured = {
    "1 SFtpClient::CheckFileSizeBeforeDownload(): remoteFileSizeByte =11, fileSizeLimit = 53687091200"};

// Local paths that cannot be opened: the library asks the server for the size at most.
class RefusedPlaces : public Disk
{
protected:
    RefusedPlaces()
    {
        writeFile(served("a.bak"), "the content");
        serve();
    }

    // The error of opening the request's local file, 0 if it can be opened.
    int errorOfOpening(int flags) const
    {
        const int descriptor = open(request.localPath.c_str(), flags, 0600);
        const int error = descriptor < 0 ? errno : 0;
        static_cast<void>(::close(descriptor));
        return error;
    }

    void expectNotDownloaded()
    {
        errorText = "as it was";
        live::takeRecords();
        EXPECT_EQ("CURLE_FAILED_INIT", download());
        EXPECT_EQ(kNotOpened, errorText);
        EXPECT_TRUE(sameLines(kMeasured + downloadFailed("DownLoadSFtpFile():open file failed. ", kNotOpened),
                              live::takeRecords()));
    }

    void expectNotListed()
    {
        errorText = "as it was";
        live::takeRecords();
        const std::size_t before = sessions().size();
        EXPECT_EQ("CURLE_FAILED_INIT", list());
        EXPECT_EQ(kNotOpened, errorText);
        EXPECT_TRUE(
            sameLines(listFailed("Listsftpdir():Open local file file failed.", kNotOpened), live::takeRecords()));
        EXPECT_EQ(before, sessions().size());
    }

    void expectNotUploaded()
    {
        errorText = "as it was";
        live::takeRecords();
        const std::size_t before = sessions().size();
        EXPECT_EQ("CURLE_FAILED_INIT", upload());
        EXPECT_EQ(kNotOpened, errorText);
        EXPECT_TRUE(sameLines(uploadNotOpened(), live::takeRecords()));
        EXPECT_EQ(before, sessions().size());
    }
};

// A folder whose files can be read, but in which none can be created.
class ReadOnlyFolder : public RefusedPlaces
{
protected:
    ReadOnlyFolder()
    {
        // The other user needs access to this folder.
        fs::permissions(fs::path(local("")).parent_path().parent_path(), fs::perms(0711));
        fs::permissions(local(""), fs::perms(0711));
        fs::create_directory(local("sealed"));
        writeFile(local("sealed/old"), "an old file");
        fs::permissions(local("sealed/old"), fs::perms(0444));
        fs::permissions(local("sealed"), fs::perms(0555));
    }

    ~ReadOnlyFolder() override { fs::permissions(local("sealed"), fs::perms(0755)); }
};

TEST_F(ReadOnlyFolder, RejectsANewFile)
{
    request.localPath = local("sealed/new");
    {
        const OtherUser user;
        ASSERT_EQ(EACCES, errorOfOpening(O_WRONLY | O_CREAT));
        expectNotDownloaded();
        expectNotListed();
    }
    EXPECT_FALSE(exists(local("sealed/new")));
}

TEST_F(ReadOnlyFolder, KeepsAnExistingFile)
{
    request.localPath = local("sealed/old");
    {
        const OtherUser user;
        ASSERT_EQ(EACCES, errorOfOpening(O_WRONLY));
        expectNotDownloaded();
        expectNotListed();
    }
    EXPECT_EQ("an old file", contentOf(local("sealed/old")));
}

TEST_F(ReadOnlyFolder, CanBeUploadedFrom)
{
    request.localPath = local("sealed/old");
    {
        const OtherUser user;
        EXPECT_EQ("CURLE_OK", upload());
    }
    EXPECT_EQ("an old file", contentOf(served("sent.bak")));
}

TEST_F(ReadOnlyFolder, DoesNotUploadAFileThatCannotBeRead)
{
    request.localPath = local("sealed/old");
    fs::permissions(request.localPath, fs::perms(0000));
    {
        const OtherUser user;
        ASSERT_EQ(EACCES, errorOfOpening(O_RDONLY));
        expectNotUploaded();
    }
    EXPECT_FALSE(exists(served("sent.bak")));
}

TEST_F(RefusedPlaces, AMissingFolder)
{
    request.localPath = local("missing/file");
    expectNotDownloaded();
    expectNotListed();
    expectNotUploaded();
    EXPECT_FALSE(exists(local("missing")));
}

TEST_F(RefusedPlaces, AFolderIsNotWrittenTo)
{
    fs::create_directory(local("folder"));
    writeFile(local("folder/old"), "an old file");
    request.localPath = local("folder");
    expectNotDownloaded();
    expectNotListed();
    EXPECT_EQ("an old file", contentOf(local("folder/old")));
}

// It can be opened, and has a size; only reading fails, which libcurl treats as its end.
TEST_F(RefusedPlaces, AFolderIsUploadedAsAFileThatEndsTooEarly)
{
    request.localPath = local("folder");
    fs::create_directory(request.localPath);
    EXPECT_EQ(tooShort(), upload());
    EXPECT_EQ(tooShortText(), errorText);
    EXPECT_EQ("", contentOf(served("sent.bak")));
    EXPECT_TRUE(sameLines(uploadNotWhole(), live::takeRecords()));
}

} // namespace
