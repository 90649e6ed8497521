#include "doctor/Conversation.h"
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

void probeContact(const Access& access, Report& report)
{
    Conversation conversation(access);
    report.contact.code = conversation.code();
    report.contact.address = conversation.address();
    const bool found = report.contact.code == CURLE_OK || !report.contact.address.empty() ||
                       report.contact.code == CURLE_COULDNT_CONNECT;
    if (found) {
        report.contact.addresses = addressesOf(access.host);
    }
    // With implicit TLS the greeting comes after the handshake.
    if (report.contact.code == CURLE_OK && access.scheme != Scheme::Ftps) {
        report.contact.greeting = conversation.hear();
    }
}

} // namespace doctor
