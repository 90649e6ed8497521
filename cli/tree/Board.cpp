#include "tree/Board.h"

#include "output/Progress.h"

#include <EscapeControlBytes.h>

#include <algorithm>
#include <ostream>

namespace {

// Not within a character of several bytes. One of three or four may take two columns.
std::string cutTo(const std::string& text, std::size_t width)
{
    constexpr unsigned kBeginsThree = 0xe0;
    std::size_t columns = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool begins = (byte & 0xc0U) != 0x80U;
        columns += begins ? (byte < kBeginsThree ? 1 : 2) : 0;
        if (begins && columns > width) {
            return text.substr(0, i);
        }
    }
    return text;
}

} // namespace

void Board::start(std::uint64_t files, std::int64_t bytes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_files = files;
    m_bytes = bytes;
}

void Board::begin(const std::string& path, std::int64_t size)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_running[std::this_thread::get_id()] = {path, size, 0};
}

void Board::progress(const TransferProgress& now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto file = m_running.find(std::this_thread::get_id());
    if (file != m_running.end()) {
        file->second.bytes = now.bytes;
    }
}

void Board::end(bool isDone)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto file = m_running.find(std::this_thread::get_id());
    if (file == m_running.end()) {
        return;
    }
    ++m_filesDone;
    if (isDone) {
        m_bytesDone += file->second.size;
    } else {
        m_bytes -= file->second.size;
    }
    m_running.erase(file);
}

std::vector<std::string> Board::lines(const std::string& operation, std::chrono::duration<double> elapsed,
                                      std::size_t width) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_files == 0) {
        return {cutTo(operation + ": comparing", width)};
    }
    std::vector<std::string> lines(1);
    std::int64_t moved = m_bytesDone;
    for (const auto& [thread, file] : m_running) {
        moved += file.bytes;
        lines.push_back(cutTo("  " + escapeControlBytes(file.path) + ": " +
                                  progressText(file.bytes, file.size, std::chrono::duration<double>(0)),
                              width));
    }
    lines[0] = cutTo(operation + ": " + std::to_string(m_filesDone) + " of " + std::to_string(m_files) + " files, " +
                         progressText(moved, m_bytes, elapsed),
                     width);
    return lines;
}

void LiveLines::show(const std::vector<std::string>& lines, std::size_t height)
{
    clear();
    m_shown = std::min(lines.size(), std::max<std::size_t>(height, 2) - 1); // the cursor has a line, too
    for (std::size_t i = 0; i < m_shown; ++i) {
        m_terminal << lines[i] << "\n";
    }
    m_terminal << std::flush;
}

void LiveLines::clear()
{
    if (m_shown > 0) {
        m_terminal << "\x1b[" << m_shown << "A\r\x1b[J" << std::flush;
        m_shown = 0;
    }
}
