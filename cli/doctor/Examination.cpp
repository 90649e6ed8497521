#include "doctor/Examination.h"

#include "doctor/Access.h"
#include "doctor/Child.h"
#include "doctor/Facts.h"
#include "doctor/probes/Probes.h"

#include <openssl/rand.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace doctor {

namespace {

// How many times the limit a probe may take that makes one transfer, and one that makes several.
constexpr int kWaitsOfOne = 4;
constexpr int kWaitsOfMany = 10;

constexpr int kMostAttempts = 4;
constexpr int kPause = 1000; // milliseconds

/// Runs the probes, each in a process of its own, until a signal comes.
class Examination
{
public:
    Examination(const Question& question, Report& report) : m_question(question), m_report(report) {}

    /// `waits`: how many times the limit the probe may take. Returns why it was ended, if it was. A probe that a server
    /// turns away after others were welcome is repeated: the server may not yet have noticed that they are over.
    std::string run(const std::string& what, int waits, const std::function<void(Report&)>& probe)
    {
        for (int attempt = 1;; ++attempt) {
            Report facts = m_report;
            facts.turnedAway = {};
            std::string ended = runOnce(what, waits, probe, facts);
            const bool isTurnedAway = facts.turnedAway.ending != Ending::NotTried;
            m_report.turnedAway = isTurnedAway ? facts.turnedAway : m_report.turnedAway;
            if (!isTurnedAway || attempt == kMostAttempts || !pause()) {
                facts.turnedAway = m_report.turnedAway;
                m_report = std::move(facts);
                return ended;
            }
        }
    }

private:
    /// False where a signal ends it.
    bool pause()
    {
        pollfd waits = {m_signals.descriptor(), POLLIN, 0};
        if (poll(&waits, 1, kPause) <= 0) {
            return true;
        }
        m_report.signal = m_signals.take();
        return false;
    }

    std::string runOnce(const std::string& what, int waits, const std::function<void(Report&)>& probe, Report& facts)
    {
        if (facts.signal != 0) {
            return kInterrupted;
        }
        if (m_question.tell) {
            m_question.tell(what);
        }
        const std::chrono::milliseconds time = waits * m_question.limit;
        Child child([&](int results) {
            probe(facts);
            writeAll(results, packFacts(facts));
        });
        const Child::Outcome outcome = child.collect(m_signals, std::chrono::steady_clock::now() + time);
        if (outcome.event == Child::Event::Late) {
            return "did not end within " + std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) +
                   " seconds";
        }
        if (outcome.event == Child::Event::Signal) {
            facts.signal = m_signals.take();
            return kInterrupted;
        }
        if (!outcome.bytes) {
            return "needed more memory than it may have";
        }
        unpackFacts(*outcome.bytes, facts);
        return {};
    }

    const Question& m_question;
    Report& m_report;
    const SignalsHeld m_signals;
};

// The newest version that a server offers, the newest below that, and so on until there are no more.
void examineTls(Examination& examination, const Access& access, Report& report)
{
    auto& versions = report.tls.versions;
    std::size_t newest = 0;
    while (newest < versions.size()) {
        const std::string ended =
            examination.run("TLS", kWaitsOfOne, [&access, newest](Report& facts) { probeTls(access, newest, facts); });
        if (!ended.empty()) {
            versions[newest].ending = Ending::Silent;
            versions[newest].detail = "the handshake " + ended;
            return;
        }
        const std::size_t before = newest;
        while (newest < versions.size() && versions[newest].ending != Ending::NotTried) {
            ++newest;
        }
        if (newest == before || !versions[newest - 1].offered) {
            return;
        }
    }
}

/// Writing to a server that has gone is a failure to be told, not the end of the process, as long as this object lives.
class BrokenPipesIgnored
{
public:
    BrokenPipesIgnored() : m_before(std::signal(SIGPIPE, SIG_IGN)) {}
    ~BrokenPipesIgnored() { static_cast<void>(std::signal(SIGPIPE, m_before)); }
    BrokenPipesIgnored(const BrokenPipesIgnored&) = delete;
    BrokenPipesIgnored& operator=(const BrokenPipesIgnored&) = delete;

private:
    using Handler = void (*)(int);
    Handler m_before;
};

// As the library finds it.
std::string directoryIn(const std::string& commandUrl)
{
    const std::string::size_type slash = commandUrl.find('/', commandUrl.rfind(':') + 1);
    return commandUrl.empty() || slash == std::string::npos ? "" : commandUrl.substr(slash);
}

} // namespace

std::string uniqueName()
{
    std::array<unsigned char, 8> bytes = {};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw std::runtime_error("There are no random numbers for a file name.");
    }
    constexpr char kDigits[] = "0123456789abcdef";
    std::string name = "sftpclient-doctor-";
    for (const unsigned int byte : bytes) {
        name.append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
    }
    return name;
}

Report examine(const Question& question)
{
    const BrokenPipesIgnored brokenPipesIgnored;
    const Access access(question.request, question.limit);
    const std::string missing = uniqueName();
    Report report;
    report.scheme = access.scheme;
    report.url = question.request.remotePath;
    report.host = access.host;
    report.port = question.request.port;
    report.trust = access.trust;
    report.clearLogin = question.clearLogin;
    report.proxy = question.proxy;
    report.commandDirectory = directoryIn(question.commandUrl);

    report.hostKeySha256 = question.hostKeySha256;

    probeLibcurl(report);
    Examination examination(question, report);
    if (access.scheme == Scheme::Sftp) {
        if (!examination.run("greeting", kWaitsOfOne, [&](Report& facts) { probeGreeting(access, facts); }).empty()) {
            report.contact.greeting.ending = Ending::Garbled;
        }
        examination.run("host key", kWaitsOfOne, [&](Report& facts) { probeHostKey(access, facts); });
    } else {
        examineTls(examination, access, report);
    }
    report.unfinishedLogin =
        examination.run("login", kWaitsOfMany, [&](Report& facts) { probeLogin(access, missing, facts); });
    examination.run("user name", kWaitsOfOne, [&](Report& facts) { probeClearUser(access, facts); });
    report.unfinishedBare = examination.run("login without the library's TLS step", kWaitsOfMany,
                                            [&](Report& facts) { probeBareLogin(access, missing, facts); });
    return report;
}

} // namespace doctor
