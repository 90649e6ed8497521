#ifndef SFTPCLIENT_CLI_TRANSFER_OPERATIONWATCH_H
#define SFTPCLIENT_CLI_TRANSFER_OPERATIONWATCH_H

#include "output/Progress.h"
#include "output/Trace.h"
#include "transfer/TransferSeam.h"

#include <cstdint>

/// Watches the transfers of one operation: passes on what libcurl says, shows how far it is, ends it when a signal
/// came, and knows afterwards how it went.
class OperationWatch : public TransferObserver
{
public:
    /// What to write to, each null where it is not wanted. Both stay the caller's.
    OperationWatch(Trace* trace, Progress* progress) : m_trace(trace), m_progress(progress) {}

    bool begins() override;
    void traced(curl_infotype type, std::string_view text) override;
    bool goesOn(const TransferAmounts& amounts) override;
    void ended(CURLcode result, const TransferAmounts& amounts) override;

    /// Forgets the transfers so far: the operation is tried anew.
    void restart();

    /// How many transfers were begun.
    unsigned transfers() const { return m_transfers; }

    /// libcurl's result of the last one.
    CURLcode lastResult() const { return m_lastResult; }

    /// The bytes that the last one moved.
    std::int64_t lastBytes() const { return m_lastBytes; }

private:
    Trace* m_trace;
    Progress* m_progress;
    unsigned m_transfers = 0;
    CURLcode m_lastResult = CURLE_OK;
    std::int64_t m_lastBytes = 0;
};

#endif
