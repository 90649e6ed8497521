#include "request/OptionsCheck.h"

#include "request/Text.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

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

// One whose login holds a coded control byte is not used by libcurl, without a word.
bool holdsCodedControlByte(const std::string& text)
{
    for (std::string::size_type at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
        const std::string code = text.substr(at + 1, 2);
        if (code.size() == 2 && (code[0] == '0' || code[0] == '1') &&
            std::isxdigit(static_cast<unsigned char>(code[1])) != 0) {
            return true;
        }
    }
    return false;
}

// libcurl makes copies of what it reads.
std::string withoutLogin(const std::string& proxy)
{
    const std::string::size_type scheme = proxy.find("://");
    const std::string::size_type begin = scheme == std::string::npos ? 0 : scheme + 3;
    const std::string::size_type end = std::min(proxy.find_first_of("/?#", begin), proxy.size());
    // The first one: to libcurl, what stands behind it is the host.
    const std::string::size_type login = std::string_view(proxy).substr(0, end).find('@', begin);
    return login == std::string::npos ? proxy : proxy.substr(0, begin) + proxy.substr(login + 1);
}

bool isUrlWithoutLogin(const std::string& text)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
    const CURLUcode code = url ? curl_url_set(url.get(), CURLUPART_URL, text.c_str(),
                                              CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME | CURLU_DISALLOW_USER)
                               : CURLUE_OUT_OF_MEMORY;
    if (code == CURLUE_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    return code == CURLUE_OK;
}

// libcurl would repeat what is no proxy to it in its message, with the password. Without a scheme, it is an HTTP proxy.
void requireProxy(const std::string& proxy)
{
    requireText("proxy", proxy);
    const std::string::size_type scheme = proxy.find("://");
    const std::initializer_list<std::string_view> known = {"http", "https", "socks4", "socks4a", "socks5", "socks5h"};
    const bool isKnown =
        scheme == std::string::npos || std::any_of(known.begin(), known.end(), [&](std::string_view each) {
            return each.size() == scheme && curl_strnequal(each.data(), proxy.c_str(), scheme) != 0;
        });
    requireThat(proxy.empty() || (isKnown && isUrlWithoutLogin(withoutLogin(proxy)) &&
                                  proxy.find(' ') == std::string::npos && !holdsCodedControlByte(proxy)),
                "proxy must be the URL of an http, https, socks4, socks4a, socks5 or socks5h proxy");
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
    requireProxy(options.proxy);
    constexpr auto kHighestRate = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    requireThat(options.sendRate <= kHighestRate, "sendRate is too high");
    requireThat(options.receiveRate <= kHighestRate, "receiveRate is too high");
}

} // namespace session
