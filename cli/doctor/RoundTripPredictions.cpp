#include "doctor/RoundTripPredictions.h"

#include "doctor/RoundTrip.h"

#include <curl/curl.h>

namespace doctor {

namespace {

constexpr char kMayNotWrite[] = "Let the user write, rename and delete in that directory, at the server.";

std::string textOf(int code)
{
    return code < 0 ? "the library refuses it" : curl_easy_strerror(static_cast<CURLcode>(code));
}

// A failure that was predicted keeps its reason: the trial has none.
template <typename Expected>
void apply(const std::optional<int>& code, Expected& prediction)
{
    if (!code) {
        return;
    }
    if (*code != 0 && prediction.outlook != Outlook::Fails) {
        prediction.reason = "tried, and failed: " + textOf(*code);
        prediction.remedy = kMayNotWrite;
    }
    if (*code == 0 && prediction.outlook != Outlook::Works) {
        prediction.reason.clear();
        prediction.remedy.clear();
    }
    prediction.outlook = *code == 0 ? Outlook::Works : Outlook::Fails;
    prediction.code = *code;
}

// How long it would have gone on is not known: where nothing spoke against it, it may be slow and work.
template <typename Expected>
void applyUnfinished(const std::string& failure, Expected& prediction)
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

Prediction& of(const char* operation, std::vector<Prediction>& predictions)
{
    for (Prediction& each : predictions) {
        if (each.operation == operation) {
            return each;
        }
    }
    return predictions.front();
}

template <typename Select>
void applyTrip(const RoundTrip& roundTrip, Select of)
{
    apply(roundTrip.put, of("upload"));
    apply(roundTrip.list, of("list"));
    apply(roundTrip.get, of("download"));
    apply(roundTrip.rename, of("rename"));
    apply(roundTrip.remove, of("delete"));
    if (roundTrip.unfinished) {
        applyUnfinished(roundTrip.failure, of(operationOf(*roundTrip.unfinished)));
    }
    if (roundTrip.get == 0 && !roundTrip.unchanged) {
        auto& upload = of("upload");
        upload.outlook = Outlook::Fails;
        upload.reason = "what was fetched back is not what was sent, though both operations report success";
        upload.remedy =
            "Use libcurl 8.9 or newer, or limit the server to TLS 1.2, and look for a full disk at the server.";
    }
}

} // namespace

void applyRoundTrip(const RoundTrip& roundTrip, std::vector<Prediction>& predictions)
{
    applyTrip(roundTrip, [&predictions](const char* operation) -> Prediction& { return of(operation, predictions); });
}

void applySessionTrip(const RoundTrip& roundTrip, std::vector<Prediction>& predictions)
{
    applyTrip(roundTrip,
              [&predictions](const char* operation) -> Expectation& { return of(operation, predictions).session; });
}

} // namespace doctor
