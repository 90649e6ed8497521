#include "Session.h"

#include <boost/algorithm/string/case_conv.hpp>

#include <chrono>
#include <utility>

namespace testserver {

Session::Session(const Shared& shared, boost::asio::ip::tcp::socket socket, OpenSockets& sockets, unsigned number,
                 Transcript& transcript)
    : m_shared(shared), m_sockets(sockets), m_control(std::move(socket), sockets),
      m_data(shared.context, sockets, shared.config), m_faults(shared.config.faults, number), m_transcript(transcript),
      m_cwd(shared.config.startDirectory)
{
}

void Session::run()
{
    if ((m_shared.config.tls != TlsMode::Implicit || startControlTls()) && greet()) {
        while (!m_leaving) {
            const auto line = m_control.readLine();
            if (!line) {
                break;
            }
            serve(*line);
        }
    }
    m_data.close();
    // Closed at once, the client's last bytes would turn the close into a reset.
    if (m_shared.config.endsUnannounced) {
        m_control.closeAfterClient();
    } else {
        m_control.endTls();
        m_control.close();
    }
}

bool Session::greet()
{
    // For implicit TLS, the protection of data connections is what PROT makes it, as it is after AUTH.
    if (!misbehaves("GREETING")) {
        reply("220 ready");
    }
    return !m_leaving;
}

// The handshake on the control connection, or what the fault makes of it.
bool Session::startControlTls()
{
    const Fault* fault = m_faults.next("TLS");
    if (fault == nullptr) {
        const bool done = m_control.startTls(m_shared.controlTls);
        m_transcript.push_back(done ? "= TLS on control" : "= no TLS on control");
        return done;
    }
    switch (fault->misbehaviour) {
    case Misbehaviour::Garbage:
        m_control.write("this is no TLS handshake\r\n");
        m_control.closeAfterClient();
        break;
    case Misbehaviour::Stall:
        m_control.stall(m_shared.config.stallLimit);
        break;
    case Misbehaviour::Reset:
        m_control.reset();
        break;
    case Misbehaviour::Plain:
        return true;
    default:
        m_control.closeAfterClient();
        break;
    }
    leave();
    return false;
}

void Session::leave() { m_leaving = true; }

void Session::serve(const std::string& line)
{
    const std::size_t blank = line.find(' ');
    const std::string command = line.substr(0, blank);
    const std::string argument = blank == std::string::npos ? "" : line.substr(blank + 1);
    const std::string upper = boost::algorithm::to_upper_copy(command);
    m_transcript.push_back(commandLine(line));
    if (m_shared.config.onCommand) {
        m_shared.config.onCommand(upper);
    }
    if (!misbehaves(command)) {
        carryOut(upper, argument);
    }
}

// Carries out the fault for this command; true if the command must not be carried out.
bool Session::misbehaves(const std::string& command)
{
    const Fault* fault = m_faults.next(command);
    if (fault == nullptr) {
        return false;
    }
    switch (fault->misbehaviour) {
    case Misbehaviour::Reply:
        sendReply(fault->text);
        return true;
    case Misbehaviour::Last:
        sendReply(fault->text);
        m_control.closeAfterClient();
        leave();
        return true;
    case Misbehaviour::Endless:
        sendEndlessly(fault->text);
        return true;
    case Misbehaviour::Reset:
        m_control.reset();
        leave();
        return true;
    case Misbehaviour::Stall:
        m_control.stall(m_shared.config.stallLimit);
        leave();
        return true;
    case Misbehaviour::Delay:
        m_sockets.wait(std::chrono::milliseconds(fault->number));
        return false;
    case Misbehaviour::Split:
        m_split = true;
        return false;
    case Misbehaviour::Pad:
        m_pad = fault->number;
        return false;
    case Misbehaviour::Append:
        m_appendix = fault->text;
        return false;
    case Misbehaviour::Meet:
        return !meet(fault->number);
    default:
        m_control.close();
        leave();
        return true;
    }
}

// Waits for other sessions; false when the client has left meanwhile.
bool Session::meet(std::uint64_t sessions)
{
    if (!m_shared.meetingPoint.wait(sessions, m_control.socket())) {
        leave();
        return false;
    }
    m_transcript.push_back("= " + std::to_string(sessions) + " sessions met");
    return true;
}

void Session::reply(const std::string& text)
{
    std::string padded = text;
    padded.resize(std::max(text.size(), static_cast<std::size_t>(m_pad)), '.');
    m_pad = 0;
    sendReply(padded + (m_appendix.empty() ? "\r\n" : " " + std::exchange(m_appendix, {})));
}

void Session::sendReply(const std::string& bytes)
{
    for (std::string& line : replyLines(bytes)) {
        m_transcript.push_back(std::move(line));
    }
    bool sent = true;
    if (m_split) {
        m_split = false;
        for (const char byte : bytes) {
            sent = sent && m_control.write(&byte, 1);
        }
    } else {
        sent = m_control.write(bytes);
    }
    if (!sent) {
        leave();
    }
}

// The transcript records it once, however often it is sent.
void Session::sendEndlessly(const std::string& bytes)
{
    sendReply(bytes);
    while (m_control.write(bytes)) {
    }
    leave();
}

bool Session::openData()
{
    const Fault* fault = m_faults.next("DATA");
    TransferEnd end = m_data.open(m_control.socket(), m_protected ? m_shared.dataTls : nullptr, fault);
    if (end == TransferEnd::Complete && m_shared.config.tlsReuseRequired && m_data.hasTls() && !m_data.continuesTls()) {
        end = TransferEnd::NewSession;
    }
    if (end == TransferEnd::Complete) {
        m_transcript.push_back(m_data.hasTls() ? "= TLS on data" : "= no TLS on data");
        return true;
    }
    closeData(end, "");
    return false;
}

void Session::closeData(TransferEnd end, const char* moved)
{
    if (*moved != '\0') {
        m_transcript.push_back("= " + std::to_string(m_data.moved()) + " bytes " + moved);
    }
    m_data.close();
    m_restart = 0;
    if (misbehaves("DONE")) {
        return;
    }
    switch (end) {
    case TransferEnd::Complete:
        reply("226 done");
        break;
    case TransferEnd::Aborted:
        reply("426 transfer aborted");
        break;
    case TransferEnd::NotConnected:
        reply("425 no data connection");
        break;
    case TransferEnd::NoTls:
        reply("425 no TLS on the data connection");
        break;
    case TransferEnd::NewSession:
        reply("522 the control connection's TLS session is required");
        break;
    case TransferEnd::Unreadable:
        reply("551 cannot be read");
        break;
    case TransferEnd::Unwritable:
        reply("553 cannot be written");
        break;
    }
}

} // namespace testserver
