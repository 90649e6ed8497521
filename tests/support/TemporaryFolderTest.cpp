#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace {

TEST(TemporaryFolder, KeepsTheBytesOfItsFiles)
{
    const TemporaryFolder folder;
    const std::string bytes("a\0b\r\n", 5);
    const std::string path = folder.write("name", bytes);
    EXPECT_EQ(folder.path() + "/name", path);
    EXPECT_EQ(bytes, contentOf(path));
    EXPECT_EQ(0600U, static_cast<unsigned>(std::filesystem::status(path).permissions()));
    writeFile(path, "");
    EXPECT_EQ("", contentOf(path));
    EXPECT_EQ(kNoFile, contentOf(folder.file("another")));
    EXPECT_THROW(folder.write("no-folder/name", ""), std::runtime_error);
}

TEST(TemporaryFolder, IsRemovedWithItsObject)
{
    std::string path;
    {
        const TemporaryFolder folder;
        path = folder.path();
        folder.write("name", "content");
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace
