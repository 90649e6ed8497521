#include "harness/AppliedSettings.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/Memory.h"
#include "support/TemporaryFolder.h"

#include <LogProxy.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

namespace {

constexpr unsigned kNone = 1000;
constexpr char kLost[] = "Log records are being lost: out of memory\n";

void writeWithFailureFrom(unsigned allocation)
{
    auto record = std::make_unique<LogProxy>(4, "m", 0, "f()", 1);
    *record << 0 << std::string(1000, 'x');
    const memory::Watch watch;
    memory::failAllocation(allocation, memory::Shortage::ForGood);
    record.reset();
}

std::string allFilesIn(const std::string& folder)
{
    std::string content;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        content += contentOf(entry.path());
    }
    return content;
}

// Makes each allocation of a record fail in turn, until there are no more: each time the record is written or reported
// as lost, and the next one counts it.
void expectToldOfEachAllocation(const HostLogSettings& settings, const std::string& folder)
{
    const AppliedSettings applied(settings);
    unsigned allocation = 1;
    for (bool lost = true; lost; ++allocation) {
        const LogCapture standardError;
        writeWithFailureFrom(allocation);
        const std::string said = standardError.text();
        lost = said == kLost;
        const std::string written = said + allFilesIn(folder);
        ASSERT_TRUE(lost || holds(std::string(1000, 'x'), written)) << allocation << ": " << written;

        LogProxy(4, "m", 0, "f()", 2) << 0 << "after";
        const std::string log = standardError.text() + allFilesIn(folder);
        ASSERT_TRUE(holds("after", log)) << allocation;
        ASSERT_EQ(lost, static_cast<bool>(holds("log records lost: 1 (out of memory)", log)))
            << allocation << ": " << log;
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        ASSERT_LT(allocation, kNone);
    }
    EXPECT_GT(allocation, 4U);
}

} // namespace

TEST(LostRecord, IsReportedWhicheverAllocationFails)
{
    const TemporaryFolder folder;
    expectToldOfEachAllocation({}, folder.path());
}

TEST(LostRecord, IsReportedInJsonToo)
{
    const TemporaryFolder folder;
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    expectToldOfEachAllocation(settings, folder.path());
}

// Each record rotates the file, so that allocations fail during a rotation too.
TEST(LostRecord, IsReportedWithRotatedFilesToo)
{
    const TemporaryFolder folder;
    HostLogSettings settings;
    settings.file = folder.file("log");
    settings.maxBytes = 1;
    expectToldOfEachAllocation(settings, folder.path());
}

// Only a file that cannot be renamed may be emptied.
TEST(LostRecord, TakesNoOtherWithItDuringARotation)
{
    const TemporaryFolder folder;
    HostLogSettings settings;
    settings.file = folder.file("log");
    settings.maxBytes = 1;
    const AppliedSettings applied(settings);
    unsigned allocation = 1;
    for (bool lost = true; lost; ++allocation) {
        const LogCapture standardError;
        LogProxy(4, "m", 0, "f()", 2) << 0 << "before " << allocation;
        writeWithFailureFrom(allocation);
        lost = standardError.text() == kLost;
        ASSERT_TRUE(holds("before " + std::to_string(allocation), allFilesIn(folder.path()))) << allocation;
        ASSERT_LT(allocation, kNone);
    }
    EXPECT_GT(allocation, 4U);
}

// A stream swallows that, and goes on with less text.
TEST(LostRecord, IsReportedIfItsTextCannotBeKept)
{
    const AppliedSettings applied({});
    const LogCapture standardError;
    {
        LogProxy record(4, "m", 0, "f()", 1);
        const std::string text(1000, 'x');
        const memory::Watch watch;
        memory::failAllocation(1, memory::Shortage::Once);
        record << 0 << text << "end";
    }
    EXPECT_EQ(kLost, standardError.text());
    LogProxy(4, "m", 0, "f()", 2) << 0 << "after";
    const std::string log = standardError.text();
    EXPECT_TRUE(holds("log records lost: 1 (out of memory)", log)) << log;
    EXPECT_TRUE(holds("after", log)) << log;
}

// In a separate process, in which the log has not been used before.
TEST(LostRecordDeathTest, IsReportedIfItIsTheFirst)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            writeWithFailureFrom(1);
            writeWithFailureFrom(2);
            LogProxy(4, "m", 0, "f()", 2) << 0 << "after";
            _exit(0);
        },
        testing::ExitedWithCode(0),
        "^Log records are being lost: out of memory\n[^\n]*log records lost: 2 \\(out of memory\\)\n[^\n]* after\n$");
}
