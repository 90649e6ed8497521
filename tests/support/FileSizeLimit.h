#ifndef SUPPORT_FILESIZELIMIT_H
#define SUPPORT_FILESIZELIMIT_H

#include <cstddef>

#include <csignal>
#include <sys/resource.h>

/// No file of this process can grow beyond so many bytes, as long as the object lives: a write fails instead.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(std::size_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    using Handler = void (*)(int);

    rlimit m_before = {};
    Handler m_handler;
};

#endif
