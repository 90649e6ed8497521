#include "doctor/Facts.h"

#include <nlohmann/json.hpp>

#include <tuple>

namespace nlohmann {

template <typename Value>
struct adl_serializer<std::optional<Value>>
{
    static void to_json(json& to, const std::optional<Value>& value) { to = value ? json(*value) : json(nullptr); }
    static void from_json(const json& from, std::optional<Value>& value)
    {
        value = from.is_null() ? std::nullopt : std::optional<Value>(from.get<Value>());
    }
};

} // namespace nlohmann

namespace doctor {

using nlohmann::json;

static void to_json(json& to, const ServerText& text) { to = {text.raw(), text.shown()}; }
static void from_json(const json& from, ServerText& text) { text = ServerText::restored(from.at(0), from.at(1)); }

static void to_json(json& to, const NameList& names) { to = {names.bytes(), names.isCut()}; }
static void from_json(const json& from, NameList& names) { names = NameList(from.at(0), from.at(1)); }

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Reply, ending, code, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Contact, code, addresses, address, greeting)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Certificate, subject, issuer, serial, notBefore, notAfter)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(TlsVersion, name, ending, offered, detail)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Tls, auth, versions, chain, namesHost, anchor, givenTrust, caFails)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(HostKey, type, fingerprint, line, match, notCompared, error)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Exchange, command, reply)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ProbeResult, made, connected, address, code, error, verifyResult, entryPath, names,
                                   transcript)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Login, test, listing, root, missing, commands)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(StepResult, code, said, isGood)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(RoundTrip, name, steps, notMade, unfinished, failure, leftBehind, leftUnknown)

namespace {

template <typename Some>
auto factsOf(Some& report)
{
    return std::tie(report.contact, report.tls, report.hostKey, report.client, report.session, report.clearUser,
                    report.bare, report.bareAgain, report.bareCommands, report.turnedAway, report.limit,
                    report.roundTrip, report.sessionTrip);
}

} // namespace

std::vector<std::uint8_t> packFacts(const Report& report)
{
    return std::apply([](const auto&... facts) { return json::to_msgpack({facts...}); }, factsOf(report));
}

void unpackFacts(const std::vector<std::uint8_t>& bytes, Report& report)
{
    const json packed = json::from_msgpack(bytes);
    std::size_t place = 0;
    std::apply([&](auto&... facts) { (packed.at(place++).get_to(facts), ...); }, factsOf(report));
}

} // namespace doctor
