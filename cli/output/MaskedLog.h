#ifndef SFTPCLIENT_CLI_OUTPUT_MASKEDLOG_H
#define SFTPCLIENT_CLI_OUTPUT_MASKEDLOG_H

#include "base/Descriptor.h"
#include "output/PasswordMask.h"

/// Keeps the log's records as long as this object lives, and then writes them to standard error, with the password
/// masked: a session's records quote the server. Throws `std::system_error` where the process has no descriptor left.
/// REQUIRES: one at a time.
class MaskedLog
{
public:
    /// REQUIRES: `mask` outlives this object.
    explicit MaskedLog(const PasswordMask& mask);
    ~MaskedLog();
    MaskedLog(const MaskedLog&) = delete;
    MaskedLog& operator=(const MaskedLog&) = delete;

private:
    const PasswordMask& m_mask;
    const Descriptor m_records;
};

#endif
