#ifndef SFTPCLIENT_HOST_LOGFILE_H
#define SFTPCLIENT_HOST_LOGFILE_H

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

/// A regular file that lines are added to, and that gives way to a new one before it becomes too large: "a.log" is then
/// renamed to "a.1.log", that one to "a.2.log", and so on. For one thread, and one process, at a time.
///
/// A file that it makes has the mode 0640, less what the umask takes away; one that is there keeps its own.
class LogFile
{
public:
    /// Opens the file, and makes its folder if there is none. `files` counts the one that is written to. Throws
    /// `std::exception` with a text that names the file; so for all that is no regular file, such as a FIFO.
    /// REQUIRES: `maxBytes` and `files` are at least 1.
    LogFile(const std::string& path, std::size_t maxBytes, std::size_t files);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Adds the line, which has its end of line, or throws `std::exception` with a text that names the file and leaves
    /// nothing of the line in it. The line goes to the file that has the name now: one that was removed, renamed or
    /// replaced is opened anew first, one that was cut is written to at its end.
    void write(std::string_view line);

private:
    /// One that is open, or none.
    class Descriptor
    {
    public:
        Descriptor() = default;
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;

        void reset(int number);
        int number() const { return m_number; }

    private:
        int m_number = -1;
    };

    void open();
    off_t sizeInPlace();
    void giveWay();
    void empty() const;
    void shiftNames() const;
    void append(std::string_view line, off_t size) const;

    std::string m_path;
    std::size_t m_maxBytes;
    std::size_t m_files;
    Descriptor m_file;
};

#endif
