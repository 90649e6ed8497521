#ifndef SFTPCLIENT_CLI_OPERATION_STREAMS_H
#define SFTPCLIENT_CLI_OPERATION_STREAMS_H

#include <cstddef>
#include <stdexcept>

/// Standard input or output failed, or a signal came while it was waited for.
class StreamFailure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Writes all to standard output; false where nobody reads it any more. Throws `StreamFailure`.
/// REQUIRES: an `Interruption`.
bool writeToOutput(const char* bytes, std::size_t size);

/// Whether nobody reads standard output any more.
bool isOutputClosed();

/// Reads up to `size` bytes from standard input, waiting for the first; 0 at its end. Throws `StreamFailure`.
/// REQUIRES: an `Interruption`.
std::size_t readFromInput(char* bytes, std::size_t size);

#endif
