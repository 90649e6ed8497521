#include "support/Redirection.h"

#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

// Exists only in a program that is built with a sanitizer.
#pragma weak __sanitizer_set_report_fd

namespace {

// A sanitizer's reports are for whoever reads the test's output, not for the file that the test compares. (Those of
// g++'s undefined-behaviour sanitizer still go there: it settles where to write with its first report.)
void keepReportsAt(int descriptor)
{
    if (__sanitizer_set_report_fd != nullptr) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): it takes the number itself in place of a pointer
        __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor)));
    }
}

} // namespace

Redirection::Redirection(FILE* stream) : m_stream(stream), m_original(dup(fileno(stream)))
{
    if (m_original < 0) {
        throw std::runtime_error("a stream cannot be redirected");
    }
    static_cast<void>(fflush(m_stream));
    if (fileno(m_stream) == STDERR_FILENO) {
        keepReportsAt(m_original);
    }
    static_cast<void>(dup2(m_file.descriptor(), fileno(m_stream)));
}

Redirection::~Redirection()
{
    static_cast<void>(fflush(m_stream));
    static_cast<void>(dup2(m_original, fileno(m_stream)));
    if (fileno(m_stream) == STDERR_FILENO) {
        keepReportsAt(STDERR_FILENO);
    }
    static_cast<void>(::close(m_original));
}

std::string Redirection::content() const
{
    static_cast<void>(fflush(m_stream));
    return m_file.content();
}
