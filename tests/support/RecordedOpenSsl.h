#ifndef SUPPORT_RECORDEDOPENSSL_H
#define SUPPORT_RECORDEDOPENSSL_H

#include <string>
#include <vector>

/// The OpenSSL calls of the library, noted while the memory is watched and then carried out, or failed where told.
namespace recorded {

struct OpenSsl
{
    /// The call that fails: a function's name, for BIO_new_mem_buf with the count of the call ("BIO_new_mem_buf 2").
    std::string fails;
    int buffers = 0;
    const void* bytes = nullptr; ///< what the last buffer reads from
};

OpenSsl& openSsl();

/// Empties this thread's OpenSSL error queue and puts one of the host's own errors into it, which is returned.
unsigned long leaveHostsError();

/// What the queue holds, the oldest first; empties it.
std::vector<unsigned long> takeErrors();

} // namespace recorded

#endif
