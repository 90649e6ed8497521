#ifndef SFTPCLIENT_HOST_WITHOUTWRITESIGNALS_H
#define SFTPCLIENT_HOST_WITHOUTWRITESIGNALS_H

#include <csignal>

/// Keeps from the calling thread, as long as it lives, the signals that a failed write sends to it and that would end
/// the host: SIGPIPE, of a pipe without a reader (EPIPE), and SIGXFSZ, beyond the limit of a file's size (EFBIG).
class WithoutWriteSignals
{
public:
    WithoutWriteSignals();
    ~WithoutWriteSignals();
    WithoutWriteSignals(const WithoutWriteSignals&) = delete;
    WithoutWriteSignals& operator=(const WithoutWriteSignals&) = delete;

    /// Takes the signal that came with this error of a write.
    void discard(int error) const;

private:
    sigset_t m_before = {};
};

#endif
