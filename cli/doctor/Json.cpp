#include "doctor/Renderers.h"

#include <JsonText.h>

#include <nlohmann/json.hpp>

#include <array>
#include <ostream>

namespace doctor {

using Json = nlohmann::ordered_json;

// Each word at the place of its kind.
static void to_json(Json& json, Grade grade)
{
    constexpr std::array<const char*, 4> kWords = {"ok", "warn", "fail", "none"};
    json = kWords.at(static_cast<std::size_t>(grade));
}

static void to_json(Json& json, Outlook outlook)
{
    constexpr std::array<const char*, 3> kWords = {"works", "fails", "unknown"};
    json = kWords.at(static_cast<std::size_t>(outlook));
}

static void to_json(Json& json, const Finding& finding)
{
    json = {{"probe", finding.probe}, {"grade", finding.grade}, {"seen", finding.seen}};
}

static void tell(const Expectation& expected, Json& json)
{
    json["outlook"] = expected.outlook;
    json["code"] = expected.code ? Json(*expected.code) : Json(nullptr);
    json["reason"] = expected.reason;
    json["remedy"] = expected.remedy;
}

static void to_json(Json& json, const Prediction& prediction)
{
    json = {{"operation", prediction.operation}};
    tell(prediction, json);
    tell(prediction.session, json["session"]);
}

static void to_json(Json& json, const Certificate& each)
{
    json = {{"subject", each.subject.shown()},
            {"issuer", each.issuer.shown()},
            {"serial", each.serial.shown()},
            {"notBefore", each.notBefore},
            {"notAfter", each.notAfter}};
}

void renderJson(const Report& report, const std::vector<Prediction>& predictions, std::ostream& out)
{
    const std::string& fingerprint = report.hostKey.fingerprint;
    const Json json = {{"url", report.url},
                       {"libcurl", report.libcurl.version},
                       {"status", exitStatusOf(predictions)},
                       {"operations", predictions},
                       {"findings", findingsOf(report)},
                       {"certificates", report.tls.chain},
                       {"hostKey", fingerprint.empty() ? Json(nullptr) : Json(fingerprint)},
                       {"leftBehind", report.roundTrip ? Json(report.roundTrip->leftBehind) : Json::array()}};
    constexpr int kIndent = 2;
    out << jsonText(json, kIndent) << '\n';
}

} // namespace doctor
