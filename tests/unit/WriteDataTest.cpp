#include "transfer/SftpWriteData.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

struct Close
{
    void operator()(FILE* stream) const { static_cast<void>(fclose(stream)); }
};
using Stream = std::unique_ptr<FILE, Close>;

std::string contentOf(FILE* stream)
{
    rewind(stream);
    char bytes[64];
    return std::string(bytes, fread(bytes, 1, sizeof bytes, stream));
}

TEST(WriteData, WritesEveryByteAndReturnsTheCountOfItems)
{
    const Stream stream(tmpfile());
    ASSERT_NE(nullptr, stream);
    char block[] = "abc\0ef\r\nxyz.behind";
    EXPECT_EQ(4U, sftp_write_data(block, 3, 4, stream.get()));
    EXPECT_EQ(std::string("abc\0ef\r\nxyz.", 12), contentOf(stream.get()));
}

TEST(WriteData, AppendsBlockToBlock)
{
    const Stream stream(tmpfile());
    ASSERT_NE(nullptr, stream);
    char block[] = "ab";
    EXPECT_EQ(2U, sftp_write_data(block, 1, 2, stream.get()));
    EXPECT_EQ(1U, sftp_write_data(block, 2, 1, stream.get()));
    EXPECT_EQ("abab", contentOf(stream.get()));
}

TEST(WriteData, WritesNothingOfAnEmptyBlock)
{
    const Stream stream(tmpfile());
    ASSERT_NE(nullptr, stream);
    char block[] = "ab";
    EXPECT_EQ(0U, sftp_write_data(block, 0, 2, stream.get()));
    EXPECT_EQ(0U, sftp_write_data(block, 2, 0, stream.get()));
    EXPECT_EQ("", contentOf(stream.get()));
}

TEST(WriteData, ReturnsAShortCountFromAFullDevice)
{
    const Stream stream(fopen("/dev/full", "w"));
    ASSERT_NE(nullptr, stream) << "/dev/full cannot be opened for writing";
    ASSERT_EQ(0, setvbuf(stream.get(), nullptr, _IONBF, 0));
    char block[] = "ab";
    EXPECT_EQ(0U, sftp_write_data(block, 1, 2, stream.get()));
}

TEST(WriteData, ReturnsTheNumberOfItemsThatFit)
{
    char room[5];
    const Stream stream(fmemopen(room, sizeof room, "w"));
    ASSERT_NE(nullptr, stream);
    ASSERT_EQ(0, setvbuf(stream.get(), nullptr, _IONBF, 0));
    char block[] = "abcdefgh";
    EXPECT_EQ(2U, sftp_write_data(block, 2, 4, stream.get()));
}

} // namespace
