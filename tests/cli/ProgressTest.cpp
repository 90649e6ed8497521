#include <output/Progress.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace std::chrono_literals;

namespace {

constexpr std::int64_t kMebi = 1048576;

} // namespace

TEST(ProgressText, ShowsTheAmountTheRateAndTheTimeLeft)
{
    EXPECT_EQ("12.0 MiB of 48.0 MiB, 25 %, 6.0 MiB/s, 6 s left", progressText(12 * kMebi, 48 * kMebi, 2s));
    EXPECT_EQ("1.0 MiB of 1000.0 MiB, 0 %, 1.0 MiB/s, 17 min left", progressText(kMebi, 1000 * kMebi, 1s));
    EXPECT_EQ("1.0 MiB of 97.7 GiB, 0 %, 1.0 MiB/s, 28 h left", progressText(kMebi, 100000 * kMebi, 1s));
    EXPECT_EQ("1023 B of 1023 B, 100 %, 1023 B/s", progressText(1023, 1023, 1s));
}

TEST(ProgressText, LeavesOutWhatIsUnknown)
{
    EXPECT_EQ("2.0 KiB, 1.0 KiB/s", progressText(2048, 0, 2s));
    EXPECT_EQ("0 B of 2.0 KiB, 0 %", progressText(0, 2048, 5s));
    EXPECT_EQ("512 B of 2.0 KiB, 25 %", progressText(512, 2048, 0s));
}

TEST(Progress, IsOverwrittenInPlaceAndClearedOnce)
{
    std::ostringstream terminal;
    Progress progress(terminal);
    progress.start();
    progress.clear();
    EXPECT_EQ("", terminal.str());
    progress.show(1, 0);
    const std::string shown = terminal.str();
    EXPECT_EQ(0U, shown.find("\r\x1b[K\x1b[?7l1 B"));
    EXPECT_EQ(shown.size() - 5, shown.rfind("\x1b[?7h")) << "on a narrow terminal it would take two lines";
    progress.clear();
    progress.clear();
    EXPECT_EQ(shown + "\r\x1b[K", terminal.str());
}
