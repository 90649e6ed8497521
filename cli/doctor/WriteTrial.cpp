#include "doctor/WriteTrial.h"

#include "base/ThrowErrno.h"
#include "doctor/Child.h"
#include "doctor/CleanUp.h"
#include "doctor/RoundTrip.h"
#include "doctor/SessionPredictions.h"

#include <curl/curl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace doctor {

namespace {

// A step has as many waits as this, at most, before the trial is given up.
constexpr int kWaits = 3;
constexpr int kWaitsOfCleanUp = 4;

// Takes in the results until there are no more; a signal, or a step that takes too long, ends that early.
int follow(Child& child, const SignalsHeld& signals, std::chrono::milliseconds limit, Report& report)
{
    RoundTrip* current = &*report.roundTrip;
    const std::chrono::milliseconds patience = kWaits * limit;
    for (;;) {
        const Child::Event event = child.wait(signals, std::chrono::steady_clock::now() + patience);
        if (event == Child::Event::Late) {
            current->failure = "did not finish within " +
                               std::to_string(std::chrono::ceil<std::chrono::seconds>(patience).count()) + " seconds";
            return 0;
        }
        if (event == Child::Event::Signal) {
            current->failure = kInterrupted;
            return signals.take();
        }
        StepNews news = {};
        if (read(child.results(), &news, sizeof news) != sizeof news) {
            current->failure = child.finishes() ? "" : "ended without a result";
            return 0;
        }
        if (news.ofSession) {
            current = &*report.sessionTrip;
        }
        record(news, *current);
    }
}

// Without a login a trial shows nothing new; a directory that an upload would make would be left behind.
std::string obstacle(const Report& report)
{
    const bool loggedIn = report.client.test.loggedIn() || report.bare.loggedIn() ||
                          (report.scheme == Scheme::Sftp && report.client.test.succeeded());
    const bool missing = report.client.test.code == CURLE_REMOTE_ACCESS_DENIED ||
                         report.bare.code == CURLE_REMOTE_ACCESS_DENIED ||
                         report.client.test.code == CURLE_REMOTE_FILE_NOT_FOUND;
    if (missing) {
        return "the directory is not there, and an upload would leave it behind";
    }
    return loggedIn ? "" : "no login works";
}

// Signals have to wait until it is done.
void cleanUpApart(const Question& question, const Report& report, const SignalsHeld& signals, RoundTrip& roundTrip)
{
    Child child([&](int results) {
        cleanUp(question, report, roundTrip);
        writeAll(results, nlohmann::json::to_msgpack({roundTrip.leftBehind, roundTrip.leftUnknown}));
    });
    const auto end = std::chrono::steady_clock::now() + kWaitsOfCleanUp * question.limit;
    Child::Outcome outcome = child.collect(signals, end);
    while (outcome.event == Child::Event::Signal) {
        signals.take();
        outcome = child.collect(signals, end);
    }
    roundTrip.leftUnknown = !outcome.bytes;
    if (outcome.bytes) {
        const auto left = nlohmann::json::from_msgpack(*outcome.bytes);
        left.at(0).get_to(roundTrip.leftBehind);
        left.at(1).get_to(roundTrip.leftUnknown);
    }
}

} // namespace

int tryWriting(const Question& question, Report& report)
{
    RoundTrip& roundTrip = report.roundTrip.emplace();
    roundTrip.name = uniqueName();
    roundTrip.notMade = obstacle(report);
    if (!roundTrip.notMade.empty()) {
        return 0;
    }
    const bool withSession = predictForSession(report, "upload").outlook == Outlook::Works;
    if (withSession) {
        report.sessionTrip.emplace().name = nameForSession(roundTrip.name);
    }
    const SignalsHeld signals;
    int signal = 0;
    {
        Child child([&](int results) {
            makeRoundTrip(question, roundTrip.name, withSession, [results](const StepNews& news) {
                // Smaller than what a pipe takes at once.
                if (write(results, &news, sizeof news) != sizeof news) {
                    throwErrno("the result of a step is lost");
                }
            });
        });
        signal = follow(child, signals, question.limit, report);
    }
    cleanUpApart(question, report, signals, roundTrip);
    return signal != 0 ? signal : signals.take();
}

} // namespace doctor
