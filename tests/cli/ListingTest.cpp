#include "harness/Served.h"

#include <output/Listing.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <stdexcept>

using namespace std::string_literals;

namespace {

std::string printed(const std::string& listing, bool forTerminal)
{
    std::ostringstream out;
    printListing(listing, out, forTerminal);
    return out.str();
}

} // namespace

TEST(Listing, IsCopiedByteForByte)
{
    const std::string listing = "a\r\nb\x1b[2J\r\n\0c"s;
    EXPECT_EQ(listing, printed(listing, false));
    EXPECT_EQ("", printed("", false));
}

TEST(Listing, IsEscapedForATerminal)
{
    EXPECT_EQ("a\nb\\x1b[2J\nc d\n\\re\\r\nlast\n", printed("a\r\nb\x1b[2J\r\nc d\n\re\r\r\nlast", true));
    EXPECT_EQ("", printed("", true));
}

TEST(Listing, ReportsThatItCannotBePrinted)
{
    const std::string listing("a\r\n");
    std::ostringstream full;
    full.setstate(std::ios::badbit);
    EXPECT_THROW(printListing(listing, full, false), std::runtime_error);
    EXPECT_THROW(printListing(listing, full, true), std::runtime_error);
    EXPECT_THROW(printEntries({}, full, true), std::runtime_error);
    EXPECT_THROW(readListing("/nowhere/listing"), std::runtime_error);
}

TEST(Entries, HaveALineEach)
{
    using Clock = std::chrono::system_clock;
    const std::vector<RemoteEntry> entries{
        {"notes.txt", EntryKind::File, 18, Clock::from_time_t(1767225600)},
        {"weekly", EntryKind::Directory, -1, std::nullopt},
        {"li\x1b[nk", EntryKind::Other, -1, std::nullopt},
    };
    const std::string beginning = "-           18 2026-01-01T00:00:00Z notes.txt\n"
                                  "d            - -                    weekly\n"
                                  "?            - -                    ";
    for (const bool forTerminal : {false, true}) {
        std::ostringstream out;
        printEntries(entries, out, forTerminal);
        EXPECT_TRUE(sameText(beginning + (forTerminal ? "li\\x1b[nk\n" : "li\x1b[nk\n"), out.str()));
    }
}

TEST_F(Served, LeavesNoFileIfNobodyReadsTheListing)
{
    writeFile(served("file"), "");
    serve();
    const std::string temporary = folder.file("temporary");
    std::filesystem::create_directory(temporary);
    for (const std::string output : {"--json=false", "--json"}) {
        Pipe pipe;
        ProcessSetup setup = setupOf({"ls", url(), output}, {{"TMPDIR", temporary}});
        setup.out = pipe.writer();
        setup.err = "/dev/null";
        Process command(setup);
        pipe.closeWriter();
        pipe.closeReader();
        EXPECT_EQ(-SIGPIPE, command.wait()) << output;
        EXPECT_TRUE(std::filesystem::is_empty(temporary)) << output;
    }
}

TEST(TemporaryFile, ExistsAsLongAsItsObject)
{
    std::string path;
    {
        const TemporaryFile file;
        path = file.path();
        EXPECT_EQ(0, access(path.c_str(), R_OK | W_OK));
    }
    EXPECT_NE(0, access(path.c_str(), F_OK));
}
