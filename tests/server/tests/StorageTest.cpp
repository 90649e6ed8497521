#include "support/TemporaryFolder.h"

#include <Storage.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using testserver::Storage;
namespace fs = std::filesystem;

class StorageTest : public testing::Test
{
protected:
    StorageTest()
    {
        fs::create_directories(served / "sub");
        writeFile(served / "a.bak", "the content");
        writeFile(folder.file("outside"), "secret");
    }

    TemporaryFolder folder;
    fs::path served = folder.file("served");
    Storage storage = Storage((fs::create_directories(served), served));
};

TEST(StoragePath, IsRelativeToTheDirectory)
{
    EXPECT_EQ("/a", Storage::absolute("/", "a"));
    EXPECT_EQ("/sub/a", Storage::absolute("/sub", "a"));
    EXPECT_EQ("/a", Storage::absolute("/sub", "/a"));
    EXPECT_EQ("/sub", Storage::absolute("/sub", ""));
    EXPECT_EQ("/sub/a", Storage::absolute("/sub", "./a/"));
}

TEST(StoragePath, NothingIsAboveTheRoot)
{
    EXPECT_EQ("/", Storage::absolute("/", ".."));
    EXPECT_EQ("/etc/passwd", Storage::absolute("/sub", "../../../etc/passwd"));
    EXPECT_EQ("/", Storage::absolute("/sub", "/../.."));
}

TEST_F(StorageTest, FilesAndDirectories)
{
    EXPECT_TRUE(storage.isFile("/a.bak"));
    EXPECT_FALSE(storage.isFile("/sub"));
    EXPECT_FALSE(storage.isFile("/missing"));
    EXPECT_TRUE(storage.isDirectory("/"));
    EXPECT_TRUE(storage.isDirectory("/sub"));
    EXPECT_FALSE(storage.isDirectory("/a.bak"));
    EXPECT_EQ(11U, storage.size("/a.bak"));
    EXPECT_EQ(0U, storage.size("/missing"));
    EXPECT_EQ(std::vector<std::string>({"a.bak", "sub"}), storage.names("/"));
    EXPECT_TRUE(storage.names("/missing").empty());
}

TEST_F(StorageTest, ALinkWithinTheFolderIsFollowed)
{
    fs::create_symlink("a.bak", served / "link");
    EXPECT_TRUE(storage.isFile("/link"));
}

TEST_F(StorageTest, ALinkOutOfTheFolderIsNotFollowed)
{
    fs::create_symlink(folder.file("outside"), served / "file");
    fs::create_directory_symlink(folder.path(), served / "directory");
    EXPECT_FALSE(storage.real("/file"));
    EXPECT_FALSE(storage.isFile("/file"));
    EXPECT_FALSE(storage.isWritable("/file"));
    EXPECT_FALSE(storage.isDirectory("/directory"));
    EXPECT_FALSE(storage.isFile("/directory/outside"));
    EXPECT_FALSE(storage.isWritable("/directory/new"));
    EXPECT_EQ(0U, storage.size("/file"));
}

TEST_F(StorageTest, ADanglingLinkIsNotWrittenThrough)
{
    fs::create_symlink(folder.file("not yet there"), served / "link");
    EXPECT_FALSE(storage.real("/link"));
    EXPECT_FALSE(storage.isWritable("/link"));
}

TEST_F(StorageTest, AFolderThatOnlyBeginsLikeTheServedOneIsOutside)
{
    fs::create_directory(folder.file("served2"));
    fs::create_directory_symlink(folder.file("served2"), served / "link");
    EXPECT_FALSE(storage.isDirectory("/link"));
}

TEST_F(StorageTest, APathWithAZeroByteIsInvalid)
{
    EXPECT_FALSE(storage.real(std::string("/a.bak\0x", 8)));
    EXPECT_FALSE(storage.real(std::string("/..\0x", 5)));
}

TEST_F(StorageTest, ANameThatIsTooLongIsInvalid) { EXPECT_FALSE(storage.isWritable("/" + std::string(5000, 'x'))); }

TEST_F(StorageTest, CaseIsIgnoredOnRequest)
{
    const Storage ignoring(served, true);
    EXPECT_TRUE(ignoring.isDirectory("/SUB"));
    EXPECT_EQ(fs::canonical(served) / "a.bak", ignoring.real("/A.Bak"));
    EXPECT_EQ(fs::canonical(served) / "sub" / "New", ignoring.real("/Sub/New"));
    EXPECT_FALSE(storage.isDirectory("/SUB"));
}

TEST_F(StorageTest, OnlyFilesAreWritable)
{
    ASSERT_EQ(0, ::mkfifo((served / "pipe").c_str(), S_IRUSR | S_IWUSR));
    EXPECT_TRUE(storage.isWritable("/a.bak"));
    EXPECT_TRUE(storage.isWritable("/sub/new"));
    EXPECT_FALSE(storage.isWritable("/sub"));
    EXPECT_FALSE(storage.isWritable("/missing/new"));
    EXPECT_FALSE(storage.isWritable("/pipe"));
}

TEST(StorageRoot, MustExist) { EXPECT_THROW(Storage("/no such folder"), fs::filesystem_error); }

} // namespace
