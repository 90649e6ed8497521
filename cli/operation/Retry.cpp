#include "operation/Retry.h"

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds kLongestDelay = std::chrono::hours(1);

} // namespace

bool isPassingFault(CURLcode result)
{
    switch (result) {
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
        return true;
    default:
        return false;
    }
}

std::chrono::milliseconds Retry::next()
{
    const std::chrono::milliseconds delay = std::min(m_delay, kLongestDelay);
    --m_left;
    m_delay = 2 * delay;
    return delay;
}
