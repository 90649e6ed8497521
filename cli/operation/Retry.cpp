#include "operation/Retry.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

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

bool isTransient(CURLcode result, int reply, std::string_view text)
{
    constexpr int kTransientReplies = 400;
    constexpr int kPermanentReplies = 500;
    if (text.find("CONNECT tunnel failed, response 407") != text.npos) { // a proxy's: as after CURLE_LOGIN_DENIED
        return false;
    }
    switch (result) {
    case CURLE_COULDNT_RESOLVE_PROXY: // the network
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_FTP_ACCEPT_TIMEOUT: // time
    case CURLE_PARTIAL_FILE:       // a connection that broke off
        return true;
    case CURLE_LOGIN_DENIED: // trying again can lock the account
    case CURLE_ABORTED_BY_CALLBACK:
    case CURLE_OK:
        return false;
    default:
        return isPassingFault(result) || (reply >= kTransientReplies && reply < kPermanentReplies);
    }
}

Retry::Retry(unsigned times, std::chrono::milliseconds firstDelay, std::function<double()> random)
    : m_left(times), m_delay(firstDelay), m_random(std::move(random))
{
}

std::chrono::milliseconds Retry::next()
{
    const std::chrono::milliseconds longest = std::min(m_delay, kLongestDelay);
    --m_left;
    m_delay = 2 * longest;
    const double share = (1 + m_random()) / 2;
    return std::chrono::milliseconds(std::llround(static_cast<double>(longest.count()) * share));
}

double randomShare()
{
    std::random_device device;
    return std::uniform_real_distribution<double>(0, 1)(device);
}
