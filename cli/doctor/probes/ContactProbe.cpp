#include "doctor/probes/Probes.h"

#include <curl/curl.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <new>

namespace doctor {

namespace {

constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kMostBytes = std::size_t{64} << 10;
constexpr char kSshBanner[] = "SSH-";

// Asked only after libcurl, whose wait for the resolver ends in time, has found the name.
std::vector<std::string> addressesOf(const std::string& host)
{
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    std::vector<std::string> addresses;
    if (getaddrinfo(host.c_str(), nullptr, &hints, &first) != 0) {
        return addresses;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(first, freeaddrinfo);
    for (const addrinfo* each = first; each != nullptr; each = each->ai_next) {
        std::array<char, NI_MAXHOST> text = {};
        if (getnameinfo(each->ai_addr, each->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) == 0 &&
            std::find(addresses.begin(), addresses.end(), text.data()) == addresses.end()) {
            addresses.emplace_back(text.data());
        }
    }
    return addresses;
}

/// What a server says of itself before anything else. An SSH server may say other lines first.
struct Banner
{
    std::string line;
    std::string first;
    std::size_t bytes = 0;
    bool isWhole = false;

    bool isEnough() const { return isWhole || bytes > kMostBytes; }

    void add(char byte)
    {
        ++bytes;
        if (byte != '\n') {
            line.append(line.size() < kLongestLine ? 1 : 0, byte);
            return;
        }
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        isWhole = line.compare(0, 4, kSshBanner) == 0;
        if (!isWhole) {
            first = first.empty() ? line : first;
            line.clear();
        }
    }
};

size_t hear(const char* bytes, size_t one, size_t count, void* banner) noexcept
try {
    auto& heard = *static_cast<Banner*>(banner);
    for (size_t i = 0; i < one * count && !heard.isEnough(); ++i) {
        heard.add(bytes[i]);
    }
    return heard.isEnough() ? 0 : one * count;
} catch (const std::exception&) {
    return 0;
}

size_t sayNothing(char* /*bytes*/, size_t /*one*/, size_t /*count*/, void* /*nothing*/) noexcept
{
    return CURL_READFUNC_PAUSE;
}

Reply greetingFrom(const Banner& banner, int code, const PasswordMask& mask)
{
    if (banner.isWhole) {
        return {Ending::Complete, 0, ServerText(banner.line, mask)};
    }
    const Ending broken = code == CURLE_OPERATION_TIMEDOUT ? Ending::Silent : Ending::Closed;
    return {banner.isEnough() ? Ending::Garbled : broken, 0,
            ServerText(banner.first.empty() ? banner.line : banner.first, mask)};
}

} // namespace

const Reply* refusalToConnect(const ProbeResult& result, Scheme scheme)
{
    if (result.transcript.size() != 1) {
        return nullptr;
    }
    const Reply& greeting = result.transcript.front().reply;
    // With implicit TLS, also who does not trust the server hears no greeting.
    const bool isDropped = scheme == Scheme::Ftp && greeting.ending == Ending::Closed;
    return isDropped || greeting.code == 421 || greeting.code / 100 == 5 ? &greeting : nullptr;
}

bool isTurnedAway(const ProbeResult& result, Report& report)
{
    const Reply* const refusal = refusalToConnect(result, report.scheme);
    if (refusal == nullptr || !report.contact.greeting.isPositive()) {
        return false;
    }
    report.turnedAway = *refusal;
    return true;
}

void learnContact(const Access& access, const ProbeResult& first, Report& report)
{
    report.contact.code = first.connected ? static_cast<int>(CURLE_OK) : first.code;
    report.contact.address = first.address;
    if (first.connected || !first.address.empty() || first.code == CURLE_COULDNT_CONNECT) {
        report.contact.addresses = addressesOf(access.host);
    }
    if (first.connected && access.scheme == Scheme::Ftp) {
        report.contact.greeting = first.transcript.front().reply;
    }
}

// As a terminal does that nobody types at.
void probeGreeting(const Access& access, Report& report)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> owner(curl_easy_init(), curl_easy_cleanup);
    CURL* const handle = owner.get();
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    Banner banner;
    const bool ipv6 = access.host.find(':') != std::string::npos;
    curl_easy_setopt(handle, CURLOPT_URL, ("telnet://" + (ipv6 ? "[" + access.host + "]" : access.host)).c_str());
    curl_easy_setopt(handle, CURLOPT_PORT, static_cast<long>(access.request.port));
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(access.limit.count()));
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(access.limit.count()));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, sayNothing);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, hear);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &banner);
    ProbeResult result;
    result.code = curl_easy_perform(handle);
    const char* address = nullptr;
    curl_off_t connected = 0;
    if (curl_easy_getinfo(handle, CURLINFO_PRIMARY_IP, &address) == CURLE_OK && address != nullptr) {
        result.address = address;
    }
    curl_easy_getinfo(handle, CURLINFO_CONNECT_TIME_T, &connected);
    result.connected = connected > 0;
    learnContact(access, result, report);
    if (result.connected) {
        report.contact.greeting = greetingFrom(banner, result.code, access.mask);
    }
}

} // namespace doctor
