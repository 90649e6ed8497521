#include "harness/Playback.h"

#include <algorithm>

namespace {

constexpr NetworkTime kSilence = 5 * kMillisecond;
constexpr NetworkTime kLongestHandshake = 100 * kMillisecond;
constexpr NetworkTime kPatience = 5 * 1000 * kMillisecond;
constexpr NetworkTime kTenMinutes = 600 * 1000 * kMillisecond;

// Removes the "!" that begins TLS.
bool takeTls(std::string& text, std::string::size_type at)
{
    if (at >= text.size() || text[at] != '!') {
        return false;
    }
    text.erase(at, 1);
    return true;
}

template <typename Connections>
NetworkTime earliestOf(const Connections& connections)
{
    NetworkTime next = kNever;
    for (const auto& each : connections) {
        next = std::min(next, each.next);
    }
    return next;
}

} // namespace

Playback::Playback(const std::string& script, const testserver::TlsContexts& tls)
    : m_script(script), m_tls(tls), m_fileSize(m_script.contents.empty() ? 0 : m_script.contents.front().size())
{
}

bool Playback::accept(std::uint16_t port, int descriptor, NetworkTime now)
{
    if (port == kControlPort) {
        m_controls.emplace_back(descriptor, now);
        return true;
    }
    if (port != kDataPort) {
        return false;
    }
    std::string content;
    if (!m_script.contents.empty()) {
        content = m_script.contents[std::min(m_dataConnections++, m_script.contents.size() - 1)];
    }
    const bool tls = takeTls(content, 0);
    m_fileSize = content.size();
    m_hasReceived = false;
    m_datas.emplace_back(descriptor, now + kLongestHandshake, content);
    if (tls) {
        m_datas.back().wire.beginTls(m_tls.data.get());
    }
    return true;
}

NetworkTime Playback::nextAct() const { return std::min(earliestOf(m_controls), earliestOf(m_datas)); }

void Playback::act(NetworkTime now)
{
    m_datas.remove_if([&](Data& each) { return !act(each, now); });
    m_controls.remove_if([&](Control& each) { return !act(each, now); });
}

bool Playback::act(Data& data, NetworkTime now)
{
    const std::string heard = data.wire.hear();
    if (!heard.empty()) {
        m_fileSize = heard.size() + (m_hasReceived ? m_fileSize : 0);
        m_hasReceived = true;
    }
    const bool isLate = now >= data.next;
    if (!data.wire.isOpen() || (isLate && data.wire.isInHandshake())) {
        return false;
    }
    // Nothing to send may mean that the client sends: then it is given time.
    if (!data.isSent && !data.wire.isInHandshake() && (isLate || !data.content.empty())) {
        data.wire.send(data.content);
        data.wire.finish();
        data.isSent = true;
        data.next = kNever;
    }
    return true;
}

bool Playback::act(Control& control, NetworkTime now) const
{
    const std::string heard = control.wire.hear();
    control.good.hear(heard);
    const bool isLate = now >= control.next;
    if (!control.wire.isOpen() || (isLate && (control.isDeaf || control.wire.isInHandshake()))) {
        return false;
    }
    const bool hasSign = isLate || (!heard.empty() && !control.isDeaf);
    return !hasSign || say(control, now);
}

bool Playback::say(Control& control, NetworkTime now) const
{
    if (control.replies == m_script.replies.size()) {
        return false;
    }
    std::string reply = m_script.replies[control.replies];
    if (reply == "*") {
        return sayGood(control, now);
    }
    ++control.replies;
    if (reply == "%") {
        control.isDeaf = true;
        control.next = now + kTenMinutes;
        return true;
    }
    const bool tls = takeTls(reply, reply.size() - 1);
    control.wire.send(withPorts(reply));
    control.good.sent(reply);
    control.next = now + (tls ? kLongestHandshake : kSilence);
    if (tls) {
        control.wire.beginTls(m_tls.control.get());
    }
    return true;
}

bool Playback::sayGood(Control& control, NetworkTime now) const
{
    const std::string reply = control.good.reply(m_fileSize);
    const bool isPatient = reply.empty();
    if (isPatient && control.isWaiting && now >= control.next) {
        return false;
    }
    control.isWaiting = isPatient;
    control.wire.send(reply);
    control.next = now + (isPatient ? kPatience : kSilence);
    if (!isPatient && control.replies + 1 < m_script.replies.size()) {
        ++control.replies;
    }
    return true;
}
