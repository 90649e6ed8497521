#include "transfer/RemoteDirPath.h"

#include <gtest/gtest.h>

namespace {

// "unchanged" when there is no directory.
std::string directoryOf(const std::string& url)
{
    std::string directory = "unchanged";
    const bool found = findRemoteDirPath(url, directory);
    EXPECT_EQ(found, directory != "unchanged");
    return directory;
}

TEST(RemoteDirPath, FollowsThePort)
{
    EXPECT_EQ("/backup/dir/", directoryOf("ftp://host:21/backup/dir/"));
    EXPECT_EQ("/", directoryOf("ftp://host:21/"));
    EXPECT_EQ("/a", directoryOf("ftp://host:/a"));
    EXPECT_EQ("//a//b", directoryOf("ftp://host:21//a//b"));
}

TEST(RemoteDirPath, FollowsTheSchemeIfThereIsNoPort)
{
    EXPECT_EQ("//host/backup/", directoryOf("ftp://host/backup/"));
    EXPECT_EQ("//host", directoryOf("ftp://host"));
}

TEST(RemoteDirPath, FollowsTheLastColon)
{
    EXPECT_EQ("/c", directoryOf("ftp://host:21/a:b/c"));
    EXPECT_EQ("/dir/", directoryOf("ftp://[::1]:21/dir/"));
    EXPECT_EQ("/b", directoryOf(":/a:/b"));
}

TEST(RemoteDirPath, BeginsRightAfterTheColon)
{
    EXPECT_EQ("/", directoryOf(":/"));
    EXPECT_EQ("/a", directoryOf(":/a"));
}

TEST(RemoteDirPath, NeedsAColon)
{
    EXPECT_EQ("unchanged", directoryOf(""));
    EXPECT_EQ("unchanged", directoryOf("/backup/dir/"));
    EXPECT_EQ("unchanged", directoryOf("host"));
}

TEST(RemoteDirPath, NeedsASlashAfterTheLastColon)
{
    EXPECT_EQ("unchanged", directoryOf(":"));
    EXPECT_EQ("unchanged", directoryOf("ftp://host:21"));
    EXPECT_EQ("unchanged", directoryOf("ftp://host:21/dir/file:"));
    EXPECT_EQ("unchanged", directoryOf("ftp://host/dir/file:name"));
}

} // namespace
