#include "doctor/Examination.h"

#include "doctor/Access.h"
#include "doctor/Child.h"
#include "doctor/Diagnosis.h"
#include "doctor/Facts.h"
#include "doctor/Predictions.h"
#include "doctor/probes/Probes.h"

#include <curl/curl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <random>

namespace doctor {

namespace {

// How many times the limit a probe may take that makes one transfer, and one that makes several.
constexpr int kWaitsOfOne = 4;
constexpr int kWaitsOfMany = 10;
constexpr int kWaitsOfATrip = 12;

constexpr int kMostAttempts = 4;
constexpr int kPause = 1000; // milliseconds

/// Runs the probes, each in a process of its own, until a signal comes.
class Examination
{
public:
    Examination(const Question& question, Report& report) : m_question(question), m_report(report) {}

    using Probe = std::function<void(Report& facts, const Save& save)>;

    /// `waits`: how many times the limit the probe may take. Returns why it was ended, if it was. A probe that a server
    /// turns away after others were welcome is repeated: the server may not yet have noticed that they are over.
    std::string run(const std::string& what, int waits, const Probe& probe)
    {
        return m_report.signal == 0 ? repeat(what, waits, probe) : kInterrupted;
    }

    /// The same for a probe that no signal ends, nor keeps from being made.
    std::string insistOn(const std::string& what, int waits, const Probe& probe)
    {
        m_insists = true;
        std::string ended = repeat(what, waits, probe);
        m_insists = false;
        return ended;
    }

private:
    std::string repeat(const std::string& what, int waits, const Probe& probe)
    {
        for (int attempt = 1;; ++attempt) {
            Report facts = m_report;
            facts.turnedAway = {};
            std::string ended = runOnce(what, waits, probe, facts);
            const bool isTurnedAway = facts.turnedAway.ending != Ending::NotTried;
            m_report.turnedAway = isTurnedAway ? facts.turnedAway : m_report.turnedAway;
            if (!isTurnedAway || attempt == kMostAttempts || !pause()) {
                facts.turnedAway = m_report.turnedAway;
                facts.signal = m_report.signal;
                m_report = std::move(facts);
                return ended;
            }
        }
    }

    void noteSignal()
    {
        const int signal = m_signals.take();
        m_report.signal = m_report.signal != 0 ? m_report.signal : signal;
    }

    /// False where a signal ends it.
    bool pause()
    {
        pollfd waits = {m_signals.descriptor(), POLLIN, 0};
        if (poll(&waits, 1, kPause) > 0) {
            noteSignal();
        }
        return m_insists || m_report.signal == 0;
    }

    std::string runOnce(const std::string& what, int waits, const Probe& probe, Report& facts)
    {
        if (m_question.tell) {
            m_question.tell(what);
        }
        const std::chrono::milliseconds time = waits * m_question.limit;
        Child child([&](int results) {
            const Save save = [&] { writeResult(results, packFacts(facts)); };
            probe(facts, save);
            save();
        });
        const auto end = std::chrono::steady_clock::now() + time;
        Child::Outcome outcome = child.collect(m_signals, end);
        while (outcome.event == Child::Event::Signal) {
            noteSignal();
            if (!m_insists) {
                break;
            }
            outcome = child.collect(m_signals, end);
        }
        if (!outcome.result.empty()) {
            unpackFacts(outcome.result, facts);
        }
        switch (outcome.event) {
        case Child::Event::Late:
            return "did not end within " + std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) +
                   " seconds";
        case Child::Event::Signal:
            return kInterrupted;
        default:
            return outcome.failure;
        }
    }

    const Question& m_question;
    Report& m_report;
    const SignalsHeld m_signals{{SIGINT, SIGTERM, SIGHUP}};
    bool m_insists = false;
};

// The newest version that a server offers, the newest below that, and so on until there are no more.
void examineTls(Examination& examination, const Access& access, Report& report)
{
    auto& versions = report.tls.versions;
    std::size_t newest = 0;
    while (newest < versions.size()) {
        const std::string ended = examination.run(
            "TLS", kWaitsOfOne, [&access, newest](Report& facts, const Save&) { probeTls(access, newest, facts); });
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

// Without a login a trial shows nothing new; a directory that an upload would make would be left behind.
std::string obstacle(const Report& report)
{
    if (isDirectoryMissing(report)) {
        return "the directory is not there, and an upload would leave it behind";
    }
    if (isLoginWithheld(report)) {
        return "the password is not sent to a server that has another host key than it should";
    }
    const bool loggedIn = report.client.test.loggedIn() || report.bare.loggedIn() ||
                          (report.scheme == Scheme::Sftp && report.client.test.succeeded());
    return loggedIn ? "" : "no login works";
}

void note(const std::string& ended, RoundTrip& trip)
{
    if (!ended.empty()) {
        trip.failure = ended;
    }
}

// FTP's file was sent by the login before.
void tryWriting(Examination& examination, const Access& access, Report& report)
{
    if (report.roundTrip->unfinished) {
        note(report.unfinishedBare, *report.roundTrip);
    } else {
        report.roundTrip->notMade = obstacle(report);
    }
    const bool goesOn = report.roundTrip->notMade.empty() && report.roundTrip->failure.empty();
    if (goesOn && predictForSession(report, "upload").outlook == Outlook::Works) {
        report.sessionTrip.emplace().name = report.roundTrip->name + "-session";
        const std::string ended =
            examination.run("session's round trip", kWaitsOfATrip,
                            [&access](Report& facts, const Save& save) { makeSessionTrip(access, facts, save); });
        note(ended, *report.sessionTrip);
    }
    const bool isSent = (*report.roundTrip)[Step::Put].succeeded() && report.client.test.loggedIn();
    if (goesOn && (isSent || access.scheme == Scheme::Sftp)) {
        const std::string ended = examination.run(
            "round trip", kWaitsOfATrip, [&access](Report& facts, const Save& save) { makeTrip(access, facts, save); });
        note(ended, *report.roundTrip);
    }
    if (report.roundTrip->leftUnknown) {
        examination.insistOn("clean-up", kWaitsOfMany,
                             [&access](Report& facts, const Save&) { cleanUp(access, facts); });
    }
}

// As the library finds it.
std::string directoryIn(const std::string& commandUrl)
{
    const std::string::size_type slash = commandUrl.find('/', commandUrl.rfind(':') + 1);
    return commandUrl.empty() || slash == std::string::npos ? "" : commandUrl.substr(slash);
}

} // namespace

std::string uniqueName()
{
    std::random_device random;
    std::array<char, 40> name = {};
    static_cast<void>(std::snprintf(name.data(), name.size(), "sftpclient-doctor-%08x%08x", random(), random()));
    return name.data();
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
    report.knownHostsFile = question.knownHostsFile;
    report.hostKeySha256 = question.hostKeySha256;

    probeLibcurl(report);
    Examination examination(question, report);
    if (access.scheme == Scheme::Sftp) {
        if (!examination.run("greeting", kWaitsOfOne, [&](Report& facts, const Save&) { probeGreeting(access, facts); })
                 .empty()) {
            report.contact.greeting.ending = Ending::Garbled;
        }
        examination.run("host key", kWaitsOfOne, [&](Report& facts, const Save&) { probeHostKey(access, facts); });
    } else {
        examineTls(examination, access, report);
    }
    report.unfinishedLogin =
        examination.run("login", kWaitsOfMany, [&](Report& facts, const Save&) { probeLogin(access, missing, facts); });
    examination.run("user name", kWaitsOfOne, [&](Report& facts, const Save&) { probeClearUser(access, facts); });
    if (!question.fileName.empty()) {
        report.roundTrip.emplace().name = question.fileName;
    }
    report.unfinishedBare =
        examination.run("login without the library's TLS step", kWaitsOfMany,
                        [&](Report& facts, const Save& save) { probeBareLogin(access, missing, facts, save); });
    if (report.roundTrip) {
        tryWriting(examination, access, report);
    }
    return report;
}

} // namespace doctor
