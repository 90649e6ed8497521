#ifndef SFTPCLIENT_TESTS_HOST_FILESIZELIMIT_H
#define SFTPCLIENT_TESTS_HOST_FILESIZELIMIT_H

#include <sys/resource.h>

#include <csignal>

/// Lets no file of this process become larger as long as this object lives: what a full disk does, to the byte.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        static_cast<void>(std::signal(SIGXFSZ, m_handler));
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit m_before = {};
};

#endif
