#include "harness/TextFile.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <sstream>
#include <stdexcept>

using namespace std::string_literals;

namespace {

std::string printed(const std::string& listing, bool forTerminal)
{
    const TextFile file(listing);
    std::ostringstream out;
    printListing(file.path(), out, forTerminal);
    return out.str();
}

} // namespace

TEST(Listing, IsCopiedByteForByte)
{
    const std::string listing = "a\r\nb\x1b[2J\r\n\0c"s;
    EXPECT_EQ(printed(listing, false), listing);
    EXPECT_EQ(printed("", false), "");
}

TEST(Listing, IsEscapedForATerminal)
{
    EXPECT_EQ(printed("a\r\nb\x1b[2J\r\nc d\n\re\r\r\nlast", true), "a\nb\\x1b[2J\nc d\n\\re\\r\nlast\n");
    EXPECT_EQ(printed("", true), "");
}

TEST(Listing, SaysWhenItCannotBePrinted)
{
    const TextFile file("a\r\n");
    std::ostringstream full;
    full.setstate(std::ios::badbit);
    EXPECT_THROW(printListing(file.path(), full, false), std::runtime_error);
    EXPECT_THROW(printListing(file.path(), full, true), std::runtime_error);
    std::ostringstream out;
    EXPECT_THROW(printListing("/nowhere/listing", out, false), std::runtime_error);
}

TEST(TemporaryFile, IsThereAsLongAsItsObject)
{
    std::string path;
    {
        const TemporaryFile file;
        path = file.path();
        EXPECT_EQ(access(path.c_str(), R_OK | W_OK), 0);
    }
    EXPECT_NE(access(path.c_str(), F_OK), 0);
}
