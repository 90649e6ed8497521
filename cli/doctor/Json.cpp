#include "doctor/Renderers.h"

#include <JsonText.h>

#include <nlohmann/json.hpp>

#include <ostream>

namespace doctor {

namespace {

using Json = nlohmann::ordered_json;

const char* wordOf(Grade grade)
{
    switch (grade) {
    case Grade::Ok:
        return "ok";
    case Grade::Warn:
        return "warn";
    case Grade::Fail:
        return "fail";
    default:
        return "none";
    }
}

const char* wordOf(Outlook outlook)
{
    switch (outlook) {
    case Outlook::Works:
        return "works";
    case Outlook::Fails:
        return "fails";
    default:
        return "unknown";
    }
}

Json jsonOf(const Finding& finding)
{
    return {{"probe", finding.probe}, {"grade", wordOf(finding.grade)}, {"seen", finding.seen}};
}

void tell(const Expectation& expected, Json& json)
{
    json["outlook"] = wordOf(expected.outlook);
    json["code"] = expected.code ? Json(*expected.code) : Json(nullptr);
    json["reason"] = expected.reason;
    json["remedy"] = expected.remedy;
}

Json jsonOf(const Prediction& prediction)
{
    Json json = {{"operation", prediction.operation}};
    tell(prediction, json);
    tell(prediction.session, json["session"]);
    return json;
}

Json certificatesOf(const Tls& tls)
{
    Json all = Json::array();
    for (const Certificate& each : tls.chain) {
        all.push_back({{"subject", each.subject.shown()},
                       {"issuer", each.issuer.shown()},
                       {"serial", each.serial.shown()},
                       {"notBefore", each.notBefore},
                       {"notAfter", each.notAfter}});
    }
    return all;
}

Json leftBehindBy(const Report& report)
{
    return report.roundTrip ? Json(report.roundTrip->leftBehind) : Json::array();
}

} // namespace

void renderJson(const Report& report, const std::vector<Prediction>& predictions, std::ostream& out)
{
    Json json = {{"url", report.url}, {"libcurl", report.libcurl.version}, {"status", exitStatusOf(predictions)}};
    json["operations"] = Json::array();
    for (const Prediction& each : predictions) {
        json["operations"].push_back(jsonOf(each));
    }
    json["findings"] = Json::array();
    for (const Finding& each : findingsOf(report)) {
        json["findings"].push_back(jsonOf(each));
    }
    json["certificates"] = certificatesOf(report.tls);
    json["hostKey"] = report.hostKey.fingerprint.empty() ? Json(nullptr) : Json(report.hostKey.fingerprint);
    json["leftBehind"] = leftBehindBy(report);
    constexpr int kIndent = 2;
    out << jsonText(json, kIndent) << '\n';
}

} // namespace doctor
