#include "transfer/OperationWatch.h"

#include "transfer/Interruption.h"

bool OperationWatch::begins()
{
    ++m_transfers;
    m_lastResult = CURLE_OK;
    m_lastBytes = 0;
    if (m_progress != nullptr) {
        m_progress->start();
    }
    return m_trace != nullptr;
}

void OperationWatch::traced(curl_infotype type, std::string_view text)
{
    if (m_trace == nullptr) {
        return;
    }
    if (m_progress != nullptr) {
        m_progress->clear();
    }
    m_trace->write(type, text);
}

bool OperationWatch::goesOn(const TransferAmounts& amounts)
{
    const curl_off_t bytes = amounts.received + amounts.sent;
    if (m_progress != nullptr && bytes > 0) {
        m_progress->show(bytes, amounts.toReceive + amounts.toSend);
    }
    return Interruption::signal() == 0;
}

void OperationWatch::ended(CURLcode result, const TransferAmounts& amounts)
{
    m_lastResult = result;
    m_lastBytes = amounts.received + amounts.sent;
    if (m_progress != nullptr) {
        m_progress->clear();
    }
}

void OperationWatch::restart()
{
    m_transfers = 0;
    m_lastResult = CURLE_OK;
    m_lastBytes = 0;
}
