#include "harness/Process.h"
#include "harness/Served.h"
#include "harness/TextFile.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <stdexcept>

using namespace std::string_literals;

namespace {

std::string printed(const std::string& listing, bool forTerminal)
{
    std::istringstream in(listing);
    std::ostringstream out;
    printListing(in, out, forTerminal);
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
    std::istringstream listing("a\r\n");
    std::ostringstream full;
    full.setstate(std::ios::badbit);
    EXPECT_THROW(printListing(listing, full, false), std::runtime_error);
    EXPECT_THROW(printListing(listing, full, true), std::runtime_error);
    EXPECT_THROW(openListing("/nowhere/listing"), std::runtime_error);
}

TEST_F(Served, LeavesNoFileBehindWhenNobodyReadsTheListing)
{
    writeFile(served("file"), "");
    serve();
    const std::string temporary = folder() + "/temporary";
    const std::string pipe = folder() + "/pipe";
    std::filesystem::create_directory(temporary);
    for (const std::string output : {"--json=false", "--json"}) {
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        const TextFile err("");
        ProcessSetup setup;
        setup.words = withCa({SFTPCLIENT_COMMAND, "ls", url(), output});
        setup.environment = environment();
        setup.environment.emplace_back("TMPDIR", temporary);
        setup.folder = local("");
        setup.out = pipe;
        setup.err = err.path();
        Process command(setup);
        close(reader);
        EXPECT_EQ(command.wait(), -SIGPIPE) << output;
        EXPECT_TRUE(std::filesystem::is_empty(temporary)) << output;
        std::filesystem::remove(pipe);
    }
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
