#include "doctor/ControlConnection.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <memory>

namespace doctor {

namespace {

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

// FTP's clients listen first, too.
void probeGreeting(const Access& access, Report& report)
{
    ControlConnection connection(access, Manner::Bare);
    const std::string url = access.rootUrl();
    Transfer transfer{"ftp" + url.substr(url.find("://")), Transfer::What::Nothing};
    transfer.lastCommand = "";
    const ProbeResult result = connection.run(transfer);
    learnContact(access, result, report);
    if (result.connected) {
        Reply& greeting = report.contact.greeting = result.transcript.front().reply;
        const bool isOfSsh = greeting.text.raw().compare(0, 4, "SSH-") == 0;
        const bool isOfFtp = greeting.ending == Ending::Complete;
        greeting.ending = isOfSsh ? Ending::Complete : isOfFtp ? Ending::Garbled : greeting.ending;
    }
}

} // namespace doctor
