#include "Storage.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

namespace fs = std::filesystem;
using testserver::Storage;

class StorageTest : public testing::Test
{
protected:
    StorageTest()
    {
        std::string pattern = testing::TempDir() + "storage-XXXXXX";
        folder = mkdtemp(pattern.data());
        fs::create_directories(folder / "served/below");
        fs::create_directories(folder / "served-too");
        std::ofstream(folder / "outside") << "secret";
        std::ofstream(folder / "served/file") << "content";
        fs::create_symlink(folder / "outside", folder / "served/link");
        fs::create_directory_symlink(folder, folder / "served/up");
    }
    ~StorageTest() override { fs::remove_all(folder); }

    fs::path folder;
};

TEST_F(StorageTest, PathsAreTheClients)
{
    EXPECT_EQ("/a", Storage::absolute("/", "a"));
    EXPECT_EQ("/x/a", Storage::absolute("/x", "a"));
    EXPECT_EQ("/a", Storage::absolute("/x", "/a"));
    EXPECT_EQ("/", Storage::absolute("/x", ".."));
    EXPECT_EQ("/", Storage::absolute("/", "../.."));
    EXPECT_EQ("/a", Storage::absolute("/", "../../a"));
    EXPECT_EQ("/x", Storage::absolute("/x", ""));
    EXPECT_EQ("/x", Storage::absolute("/", "x/"));
}

TEST_F(StorageTest, NothingAboveTheFolderIsReached)
{
    const Storage storage(folder / "served");
    EXPECT_TRUE(storage.isFile("/file"));
    EXPECT_TRUE(storage.isDirectory("/below"));
    EXPECT_TRUE(storage.isDirectory("/"));
    EXPECT_FALSE(storage.isFile("/link")) << "a link that leads out";
    EXPECT_FALSE(storage.isDirectory("/up"));
    EXPECT_FALSE(storage.isFile("/up/outside"));
    EXPECT_FALSE(storage.real("/up/served-too").has_value()) << "a folder whose name only begins like ours";
    EXPECT_TRUE(storage.real("/new-file").has_value());
}

TEST_F(StorageTest, NamesAreSorted)
{
    const Storage storage(folder / "served");
    EXPECT_EQ(std::vector<std::string>({"below", "file", "link", "up"}), storage.names("/"));
    EXPECT_TRUE(storage.names("/below").empty());
}

} // namespace
