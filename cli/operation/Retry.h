#ifndef SFTPCLIENT_CLI_OPERATION_RETRY_H
#define SFTPCLIENT_CLI_OPERATION_RETRY_H

#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <string_view>

/// Whether a fault may pass by itself, so that the same request can succeed a little later: no connection, a time-out,
/// a broken TLS handshake, a connection that ended or failed. Never a refusal, least of all of a login: trying that
/// again can lock the account.
bool isPassingFault(CURLcode result);

/// The same for a session, whose server said `reply` last: also a name that was not found, a transfer that broke off,
/// and whatever the server refuses for now (4xx), but for a login, to a proxy too. `text` is the session's.
bool isTransient(CURLcode result, int reply, std::string_view text);

/// A number from 0 up to 1.
double randomShare();

/// How often and when to try again.
class Retry
{
public:
    /// `random` gives a number from 0 to 1 each time.
    Retry(unsigned times, std::chrono::milliseconds firstDelay, std::function<double()> random = randomShare);

    bool isLeft() const { return m_left > 0; }

    /// Uses one up. How long to wait before it: up to `firstDelay`, and each time up to twice as long, or an hour; at
    /// least half of that. Clients that failed together do not come back together.
    std::chrono::milliseconds next();

private:
    unsigned m_left;
    std::chrono::milliseconds m_delay;
    std::function<double()> m_random;
};

#endif
