#include "harness/AppliedSettings.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/SetVariable.h"

#include <LogProxy.h>

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>
#include <string>
#include <utility>

namespace {

std::time_t now = 0;

} // namespace

// In the system's place, whose clock a test cannot set. The monotonic clock goes on.
extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock == CLOCK_REALTIME && now != 0) {
        *time = {now, 7000000};
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
}

namespace {

/// A local time zone, until the end of the test.
class Zone
{
public:
    explicit Zone(const char* name) : m_variable("TZ", name) { tzset(); }
    ~Zone() { now = 0; }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

private:
    const SetVariable m_variable;
};

std::string timeOfARecordAt(std::time_t time)
{
    now = time;
    const LogCapture standardError;
    LogProxy(4, "m", 0, "f()", 1) << 0 << "text";
    const std::string line = standardError.text();
    return line.substr(0, line.find(' '));
}

} // namespace

TEST(TimeZone, ChangesWithTheTime)
{
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const AppliedSettings applied({});
    constexpr std::time_t kEndOfSummer = 1792890000;
    EXPECT_EQ("2026-10-25T02:59:59.007+02:00", timeOfARecordAt(kEndOfSummer - 1));
    EXPECT_EQ("2026-10-25T02:00:00.007+01:00", timeOfARecordAt(kEndOfSummer));
    EXPECT_EQ("2026-10-25T02:59:59.007+02:00", timeOfARecordAt(kEndOfSummer - 1));
}

TEST(TimeZone, HasMinutesAndASign)
{
    for (const auto& [name, expected] :
         {std::pair("AAA3:30", "2026-10-24T21:30:00.007-03:30"), std::pair("AAA0:30", "2026-10-25T00:30:00.007-00:30"),
          std::pair("AAA-5:45", "2026-10-25T06:45:00.007+05:45")}) {
        const Zone zone(name);
        const AppliedSettings applied({});
        EXPECT_EQ(expected, timeOfARecordAt(1792890000));
    }
}
