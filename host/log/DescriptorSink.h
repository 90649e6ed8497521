#ifndef SFTPCLIENT_HOST_DESCRIPTORSINK_H
#define SFTPCLIENT_HOST_DESCRIPTORSINK_H

#include <unistd.h>

#include <string_view>

/// Writes each line to a descriptor with one system call, so that it also stays whole among what other processes write
/// to a pipe. For one thread at a time.
class DescriptorSink
{
public:
    /// `descriptor` stays the caller's.
    void setDescriptor(int descriptor);

    /// Throws `std::system_error` when the descriptor does not take all of the line. What it took then stays without an
    /// end of line; the next line begins with one. A pipe that nobody reads any more is such a failure, not a SIGPIPE.
    void write(std::string_view line);

private:
    void writeAll(std::string_view text);

    int m_descriptor = STDERR_FILENO;
    bool m_torn = false;
};

#endif
