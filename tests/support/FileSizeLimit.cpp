#include "support/FileSizeLimit.h"

#include <stdexcept>

FileSizeLimit::FileSizeLimit(std::size_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
{
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limit = {bytes, m_before.rlim_max};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
        throw std::runtime_error("The size of files cannot be limited; raise the hard limit (ulimit -H -f).");
    }
}

FileSizeLimit::~FileSizeLimit()
{
    setrlimit(RLIMIT_FSIZE, &m_before);
    static_cast<void>(std::signal(SIGXFSZ, m_handler));
}
