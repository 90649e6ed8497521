#include "harness/Redirection.h"

#include <unistd.h>

#include <stdexcept>

Redirection::Redirection(FILE* stream) : m_stream(stream), m_original(dup(fileno(stream))), m_file(std::tmpfile())
{
    if (m_original < 0 || !m_file) {
        throw std::runtime_error("A stream cannot be redirected into a temporary file.");
    }
    static_cast<void>(fflush(m_stream));
    static_cast<void>(dup2(fileno(m_file.get()), fileno(m_stream)));
}

Redirection::~Redirection()
{
    static_cast<void>(fflush(m_stream));
    static_cast<void>(dup2(m_original, fileno(m_stream)));
    static_cast<void>(::close(m_original));
}

std::string Redirection::content() const
{
    static_cast<void>(fflush(m_stream));
    std::string bytes;
    char block[4096];
    for (;;) {
        const ssize_t got = pread(fileno(m_file.get()), block, sizeof(block), static_cast<off_t>(bytes.size()));
        if (got <= 0) {
            return bytes;
        }
        bytes.append(block, static_cast<std::size_t>(got));
    }
}
