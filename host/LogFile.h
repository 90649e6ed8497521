#ifndef SFTPCLIENT_HOST_LOGFILE_H
#define SFTPCLIENT_HOST_LOGFILE_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

/// A file that lines are added to, and that gives way to a new one before it becomes too large: "a.log" is then renamed
/// to "a.1.log", that one to "a.2.log", and so on. For one thread, and one process, at a time.
class LogFile
{
public:
    /// Opens the file, and makes its folder if there is none. `files` counts the one that is written to. Throws
    /// `std::exception` with a text that names the file.
    /// REQUIRES: `maxBytes` and `files` are at least 1.
    LogFile(const std::string& path, std::size_t maxBytes, std::size_t files);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Adds the line, which has its end of line, or throws `std::exception` with a text that names the file and leaves
    /// nothing of the line in it. A file that was removed, or could not be opened, is opened anew first.
    void write(std::string_view line);

private:
    class Rotation;

    void open();
    void adopt(std::FILE* stream);
    bool isThere();
    void cutBack() const;

    std::string m_path;
    std::size_t m_maxBytes;
    std::size_t m_files;
    std::FILE* m_stream = nullptr; // the rotation's
    off_t m_size = 0;
    std::unique_ptr<Rotation> m_rotation;
};

#endif
