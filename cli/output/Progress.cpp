#include "output/Progress.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace {

constexpr std::chrono::milliseconds kBetween(100);
// Between these, a terminal drops what does not fit into its line: a second one would stay.
constexpr char kOneLine[] = "\x1b[?7l";
constexpr char kAllLines[] = "\x1b[?7h";
constexpr double kHour = 3600;
constexpr double kMinute = 60;

std::string timeText(double seconds)
{
    if (seconds < 2 * kMinute) {
        return std::to_string(std::lround(seconds)) + " s";
    }
    return seconds < 2 * kHour ? std::to_string(std::lround(seconds / kMinute)) + " min"
                               : std::to_string(std::lround(seconds / kHour)) + " h";
}

} // namespace

std::string amountText(double bytes)
{
    constexpr std::array<const char*, 5> kUnits{"B", "KiB", "MiB", "GiB", "TiB"};
    constexpr double kStep = 1024;
    std::size_t unit = 0;
    while (bytes >= kStep && unit + 1 < kUnits.size()) {
        bytes /= kStep;
        ++unit;
    }
    std::array<char, 32> text = {};
    static_cast<void>(std::snprintf(text.data(), text.size(), unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]));
    return text.data();
}

std::string progressText(std::int64_t bytes, std::int64_t total, std::chrono::duration<double> elapsed)
{
    const auto done = static_cast<double>(bytes);
    const auto all = static_cast<double>(total);
    const double rate = elapsed.count() > 0 ? done / elapsed.count() : 0;
    std::string text = amountText(done);
    if (total > 0) {
        text += " of " + amountText(all) + ", " + std::to_string(static_cast<int>(100 * done / all)) + " %";
    }
    if (rate > 0) {
        text += ", " + amountText(rate) + "/s";
    }
    if (rate > 0 && total > bytes) {
        text += ", " + timeText((all - done) / rate) + " left";
    }
    return text;
}

void LiveLine::show(const std::string& text)
{
    m_isShown = true;
    m_terminal << "\r\x1b[K" << kOneLine << text << kAllLines << std::flush;
}

void LiveLine::clear()
{
    if (m_isShown) {
        m_terminal << "\r\x1b[K" << std::flush;
        m_isShown = false;
    }
}

void Progress::start()
{
    m_begin = Clock::now();
    m_next = m_begin;
}

void Progress::show(std::int64_t bytes, std::int64_t total)
{
    const Clock::time_point now = Clock::now();
    if (now < m_next) {
        return;
    }
    m_next = now + kBetween;
    m_line.show(progressText(bytes, total, now - m_begin));
}
