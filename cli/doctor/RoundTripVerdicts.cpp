#include "doctor/RoundTripVerdicts.h"

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
void apply(const std::optional<int>& code, Verdict& verdict)
{
    if (!code) {
        return;
    }
    if (*code != 0 && verdict.outlook != Outlook::Fails) {
        verdict.reason = "tried, and failed: " + textOf(*code);
        verdict.remedy = kMayNotWrite;
    }
    if (*code == 0 && verdict.outlook != Outlook::Works) {
        verdict.reason.clear();
        verdict.remedy.clear();
    }
    verdict.outlook = *code == 0 ? Outlook::Works : Outlook::Fails;
    verdict.code = *code;
}

// How long it would have gone on is not known: where nothing spoke against it, it may be slow and work.
void applyUnfinished(const std::string& failure, Verdict& verdict)
{
    const std::string reason = "tried, and it " + failure;
    if (verdict.outlook == Outlook::Fails) {
        verdict.reason = reason + "; " + verdict.reason;
        return;
    }
    verdict.outlook = Outlook::Unknown;
    verdict.code.reset();
    verdict.reason = reason;
    verdict.remedy = "Try that operation alone, with --trace, and look at the server and at any firewall before it.";
}

Verdict& of(const char* operation, std::vector<Verdict>& verdicts)
{
    for (Verdict& each : verdicts) {
        if (each.operation == operation) {
            return each;
        }
    }
    return verdicts.front();
}

} // namespace

void applyRoundTrip(const RoundTrip& roundTrip, std::vector<Verdict>& verdicts)
{
    apply(roundTrip.put, of("upload", verdicts));
    apply(roundTrip.list, of("list", verdicts));
    apply(roundTrip.get, of("download", verdicts));
    apply(roundTrip.rename, of("rename", verdicts));
    apply(roundTrip.remove, of("delete", verdicts));
    if (roundTrip.unfinished) {
        applyUnfinished(roundTrip.failure, of(operationOf(*roundTrip.unfinished), verdicts));
    }
    if (roundTrip.get == 0 && !roundTrip.unchanged) {
        Verdict& upload = of("upload", verdicts);
        upload.outlook = Outlook::Fails;
        upload.reason = "what was fetched back is not what was sent, though both operations report success";
        upload.remedy =
            "Use libcurl 8.9 or newer, or limit the server to TLS 1.2, and look for a full disk at the server.";
    }
}

} // namespace doctor
