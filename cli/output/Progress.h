#ifndef SFTPCLIENT_CLI_OUTPUT_PROGRESS_H
#define SFTPCLIENT_CLI_OUTPUT_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <string>

/// "12.0 MiB".
std::string amountText(double bytes);

/// "12.0 MiB of 48.0 MiB, 25 %, 6.0 MiB/s, 6 s left" after `elapsed`. `total` is 0 where it is unknown: "12.0 MiB,
/// 6.0 MiB/s".
std::string progressText(std::int64_t bytes, std::int64_t total, std::chrono::duration<double> elapsed);

/// A line on a terminal that is written over.
class LiveLine
{
public:
    explicit LiveLine(std::ostream& terminal) : m_terminal(terminal) {}

    void show(const std::string& text);

    /// Makes room for another line.
    void clear();

private:
    std::ostream& m_terminal;
    bool m_isShown = false;
};

/// Such a line that tells how far a transfer is, at most ten times a second.
class Progress
{
public:
    explicit Progress(std::ostream& terminal) : m_line(terminal) {}

    /// A transfer begins.
    void start();

    void show(std::int64_t bytes, std::int64_t total);

    void clear() { m_line.clear(); }

private:
    using Clock = std::chrono::steady_clock;

    LiveLine m_line;
    Clock::time_point m_begin;
    Clock::time_point m_next;
};

#endif
