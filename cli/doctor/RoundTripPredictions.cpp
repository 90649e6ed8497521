#include "doctor/Predictions.h"

#include "doctor/Diagnosis.h"
#include "doctor/RoundTrip.h"

#include <curl/curl.h>

#include <algorithm>
#include <functional>

namespace doctor {

namespace {

std::string textOf(int code)
{
    return code < 0 ? "the library refuses it" : curl_easy_strerror(static_cast<CURLcode>(code));
}

// What to do about a refusal that says no more than that it is one.
std::string permissionFor(Step step)
{
    if (step == Step::List) {
        return kMayNotList;
    }
    return step == Step::Get ? "Let the user read files in that directory, at the server."
                             : "Let the user write, rename and delete in that directory, at the server.";
}

// A failure that was predicted keeps its reason: the trial has none.
void apply(const StepResult& result, Step step, Expectation& prediction)
{
    if (!result.code) {
        return;
    }
    const Reply& said = result.said;
    if (!result.succeeded() && prediction.outlook != Outlook::Fails) {
        prediction.reason = said.code != 0 ? "tried, and the server refuses it " + quote(said)
                                           : "tried, and failed: " + textOf(*result.code);
        prediction.remedy = remedyFor(said, permissionFor(step));
    }
    if (result.succeeded() && prediction.outlook != Outlook::Works) {
        prediction.reason.clear();
        prediction.remedy.clear();
    }
    prediction.outlook = result.succeeded() ? Outlook::Works : Outlook::Fails;
    prediction.code = result.code;
}

// How long it would have gone on is not known: where nothing spoke against it, it may be slow and work.
void applyUnfinished(const std::string& failure, Expectation& prediction)
{
    const std::string reason = "tried, and it " + failure;
    if (prediction.outlook == Outlook::Fails) {
        prediction.reason = reason + "; " + prediction.reason;
        return;
    }
    prediction.outlook = Outlook::Unknown;
    prediction.code.reset();
    prediction.reason = reason;
    prediction.remedy =
        failure == kInterrupted
            ? kRunAgain
            : "Try that operation alone, with --trace, and look at the server and at any firewall before it.";
}

using Select = std::function<Expectation&(const std::string& operation)>;

void applyTrip(const RoundTrip& roundTrip, const Select& of)
{
    for (const Step step : {Step::Put, Step::List, Step::Get, Step::Rename, Step::Remove}) {
        apply(roundTrip[step], step, of(operationOf(step)));
    }
    if (roundTrip.unfinished) {
        applyUnfinished(roundTrip.failure, of(operationOf(*roundTrip.unfinished)));
    }
    if (roundTrip[Step::Get].succeeded() && !roundTrip[Step::Get].isGood) {
        Expectation& upload = of("upload");
        upload.outlook = Outlook::Fails;
        upload.reason = "what was fetched back is not what was sent, though both operations report success";
        upload.remedy =
            "Use libcurl 8.14.1 or newer, or limit the server to TLS 1.2, and look for a full disk at the server.";
    }
}

} // namespace

void applyTrips(const Report& report, std::vector<Prediction>& predictions)
{
    const auto of = [&predictions](const std::string& operation) -> Prediction& {
        return *std::find_if(predictions.begin(), predictions.end(),
                             [&operation](const Prediction& each) { return each.operation == operation; });
    };
    if (report.roundTrip) {
        applyTrip(*report.roundTrip, of);
    }
    if (report.sessionTrip) {
        applyTrip(*report.sessionTrip,
                  [&of](const std::string& operation) -> Expectation& { return of(operation).session; });
    }
}

} // namespace doctor
