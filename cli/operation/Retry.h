#ifndef SFTPCLIENT_CLI_OPERATION_RETRY_H
#define SFTPCLIENT_CLI_OPERATION_RETRY_H

#include <curl/curl.h>

#include <chrono>

/// Whether a fault may pass by itself, so that the same request can succeed a little later: no connection, a time-out,
/// a broken TLS handshake, a connection that ended or failed. Never a refusal, least of all of a login: trying that
/// again can lock the account.
bool isPassingFault(CURLcode result);

/// How often and when to try again.
class Retry
{
public:
    Retry(unsigned times, std::chrono::milliseconds firstDelay) : m_left(times), m_delay(firstDelay) {}

    bool isLeft() const { return m_left > 0; }

    /// Uses one up. How long to wait before it: `firstDelay`, and each time twice as long, up to an hour.
    std::chrono::milliseconds next();

private:
    unsigned m_left;
    std::chrono::milliseconds m_delay;
};

#endif
