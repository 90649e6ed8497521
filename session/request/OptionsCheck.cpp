#include "request/OptionsCheck.h"

#include "request/Text.h"

#include <limits>
#include <stdexcept>
#include <string>

namespace session {

namespace {

void requireThat(bool holds, const std::string& sentence)
{
    if (!holds) {
        throw std::invalid_argument("SessionOptions: " + sentence);
    }
}

void requireTime(const char* field, std::chrono::milliseconds time)
{
    // libcurl's options are longs, of 32 bits on some machines.
    requireThat(time.count() >= 0 && time.count() <= std::numeric_limits<std::int32_t>::max(),
                std::string(field) + " must be from 0 to 2147483647 milliseconds");
}

void requireText(const char* field, const std::string& text)
{
    requireThat(!holdsControlByte(text), std::string(field) + " must not hold a control byte");
}

} // namespace

void checkOptions(const SessionOptions& options)
{
    requireTime("connectTimeout", options.connectTimeout);
    requireTime("replyTimeout", options.replyTimeout);
    requireTime("stallTimeout", options.stallTimeout);
    requireTime("callTimeout", options.callTimeout);
    requireTime("idleTimeout", options.idleTimeout);
    requireThat(options.maxConnections > 0, "maxConnections must be at least 1");
    requireThat(options.clientCertificate.empty() == options.clientKey.empty(),
                "clientCertificate and clientKey must both be given, or neither");
    requireThat(options.pinnedPublicKey.empty() || options.pinnedPublicKey.compare(0, 8, "sha256//") == 0,
                "pinnedPublicKey must begin with \"sha256//\"");
    requireText("pinnedPublicKey", options.pinnedPublicKey);
    requireText("knownHostsFile", options.knownHostsFile);
    requireText("hostKeySha256", options.hostKeySha256);
    requireText("proxy", options.proxy);
    constexpr auto kHighestRate = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    requireThat(options.sendRate <= kHighestRate, "sendRate is too high");
    requireThat(options.receiveRate <= kHighestRate, "receiveRate is too high");
}

} // namespace session
