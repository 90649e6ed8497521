#include "harness/AppliedSettings.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/Memory.h"

#include <LogProxy.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

constexpr std::size_t kText = 67108864;

// The memory, beyond its text, to write a record whose every byte is escaped.
std::size_t bytesToWriteARecordIn(LogFormat format)
{
    HostLogSettings settings;
    settings.format = format;
    const LogCapture capture;
    const AppliedSettings applied(settings);
    auto record = std::make_unique<LogProxy>(4, "m", 0, "f()", 1);
    *record << std::string(kText, '\x01');
    const memory::Watch watch;
    record.reset();
    const std::size_t taken = memory::bytesAllocated();
    EXPECT_TRUE(holds(" bytes left out]", capture.text()));
    EXPECT_GE(taken, kText) << "LogProxy's copy";
    return taken - kText;
}

} // namespace

TEST(LongRecord, TakesLittleMemoryBesidesItsText)
{
    EXPECT_LT(bytesToWriteARecordIn(LogFormat::Text), 4194304U);
    EXPECT_LT(bytesToWriteARecordIn(LogFormat::Json), 4194304U);
}
