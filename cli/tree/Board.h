#ifndef SFTPCLIENT_CLI_TREE_BOARD_H
#define SFTPCLIENT_CLI_TREE_BOARD_H

#include <SFtpSession.h>

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// How far the moving of many files is: all of them in a line, and each that is under way in one below. Any number of
/// threads may tell of their files; one shows the lines.
class Board
{
public:
    void start(std::uint64_t files, std::int64_t bytes);

    /// The calling thread's file.
    void begin(const std::string& path, std::int64_t size);
    void progress(const TransferProgress& now);
    void end(bool isDone);

    /// "push: 3 of 9 files, 12.0 MiB of 48.0 MiB, 25 %, 6.0 MiB/s, 6 s left", and "  sunday.bak: 1.0 MiB of 2.0 MiB,
    /// 50 %"; "push: comparing" before `start`. `width`: of the terminal.
    std::vector<std::string> lines(const std::string& operation, std::chrono::duration<double> elapsed,
                                   std::size_t width) const;

private:
    struct File
    {
        std::string path;
        std::int64_t size = 0;
        std::int64_t bytes = 0;
    };

    mutable std::mutex m_mutex;
    std::map<std::thread::id, File> m_running;
    std::uint64_t m_files = 0;
    std::uint64_t m_filesDone = 0;
    std::int64_t m_bytes = 0;
    std::int64_t m_bytesDone = 0;
};

/// Lines on a terminal that are written over.
class LiveLines
{
public:
    explicit LiveLines(std::ostream& terminal) : m_terminal(terminal) {}

    /// As many of them as fit on a terminal of `height` lines.
    void show(const std::vector<std::string>& lines, std::size_t height);
    /// Makes room for other lines.
    void clear();

private:
    std::ostream& m_terminal;
    std::size_t m_shown = 0;
};

#endif
