#include "harness/Kinds.h"

#include <openssl/tls1.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <regex>
#include <utility>

namespace {

using namespace std::chrono_literals;
using testserver::CertificateAuthority;
using testserver::CertificateOptions;
using testserver::TlsMode;

void implicit(World& world)
{
    world.config.tls = TlsMode::Implicit;
    world.machineTrusts = world.authority.certificatePem();
}

void anotherCa(World& world) { world.request.caCert = CertificateAuthority("Another CA").certificatePem(); }

void certify(World& world, std::vector<std::string> names, std::vector<std::string> addresses,
             const std::string& commonName = "")
{
    CertificateOptions options;
    options.dnsNames = std::move(names);
    options.addresses = std::move(addresses);
    options.commonName = commonName;
    world.config.certificate = world.authority.issue(options);
}

void wrongHost(World& world) { certify(world, {"elsewhere.example"}, {}); }

void validBetween(World& world, std::chrono::hours from, std::chrono::hours to)
{
    CertificateOptions options;
    options.notBefore = from;
    options.notAfter = to;
    world.config.certificate = world.authority.issue(options);
}

void limitTls(World& world, int version)
{
    world.config.minTlsVersion = version;
    world.config.maxTlsVersion = version;
}

template <typename... Texts>
void faults(World& world, Texts... texts)
{
    (world.config.faults.push_back(testserver::parseFault(texts)), ...);
}

} // namespace

const std::vector<Kind>& kinds()
{
    static const std::vector<Kind> all = {
        {"Fine", "WWWWWW", [](World&) {}},
        {"FineInADirectory", "WWWWWW", [](World& w) { w.directory = "/weekly/backups/"; }},
        {"FineImplicit", "WWWWWW", [](World& w) { implicit(w); }},
        {"FineTls12", "WWWWWW", [](World& w) { limitTls(w, TLS1_2_VERSION); }},
        {"FineTls13", "WWWWWW", [](World& w) { limitTls(w, TLS1_3_VERSION); }},
        {"FineWithoutEpsv", "WWWWWW", [](World& w) { faults(w, "EPSV=reply:500 no"); }},
        {"WrongCa", "FWFFFF", [](World& w) { anotherCa(w); }, "FFFFFF"},
        {"WrongCaImplicitButTheMachineTrusts", "WWWWWW", [](World& w) { implicit(w), anotherCa(w); }, "FFFFFF"},
        {"ImplicitUnknownToTheMachine", "FFWWWW",
         [](World& w) { implicit(w), w.machineTrusts = CertificateAuthority("Another CA").certificatePem(); }},
        {"SecondOfTwoCas", "FWFFFF",
         [](World& w) {
             w.request.caCert = CertificateAuthority("Another CA").certificatePem() + w.authority.certificatePem();
         }},
        {"FirstOfTwoCas", "WWWWWW",
         [](World& w) {
             w.request.caCert = w.authority.certificatePem() + CertificateAuthority("Another CA").certificatePem();
         }},
        {"UnreadableCa", "FWFFFF", [](World& w) { w.request.caCert = "no certificate"; }, "FFFFFF"},
        {"NoCaThoughDemanded", "FWFFFF", [](World& w) { w.request.caCert = "none"; }, "FFFFFF"},
        {"NoCaAndNoneDemanded", "WWWWWW", [](World& w) { w.request.caCert = "none", live::setCertAuthSwitch(0); }},
        {"Expired", "FWFFFF", [](World& w) { validBetween(w, -48h, -24h); }, "FFFFFF"},
        {"NotYetValid", "FWFFFF", [](World& w) { validBetween(w, 24h, 48h); }, "FFFFFF"},
        {"SelfSigned", "FWFFFF", [](World& w) { w.config.certificate = testserver::makeSelfSigned(); }, "FFFFFF"},
        {"WrongHost", "WWWWWW", [](World& w) { wrongHost(w); }, "FFFFFF"},
        {"WrongHostImplicit", "FFWWWW", [](World& w) { implicit(w), wrongHost(w); }, "FFFFFF"},
        {"AddressAmongTheNames", "WWWWWW", [](World& w) { certify(w, {"127.0.0.1"}, {}), w.host = "127.0.0.1"; },
         "FFFFFF"},
        {"CommonNameBesideAnAddress", "WWWWWW", [](World& w) { certify(w, {}, {"127.0.0.1"}, "localhost"); }, "FFFFFF"},
        {"CommonNameAlone", "WWWWWW", [](World& w) { certify(w, {}, {}, "localhost"); }},
        {"CommonNameIsTheAddress", "WWWWWW", [](World& w) { certify(w, {}, {}, "127.0.0.1"), w.host = "127.0.0.1"; }},
        {"ExpiredImplicit", "FFFFFF", [](World& w) { implicit(w), validBetween(w, -48h, -24h); }, "FFFFFF"},
        {"OldTlsOnly", "FWFFFF", [](World& w) { limitTls(w, TLS1_1_VERSION); }, "FFFFFF"},
        {"NoTls", "FWFFFF", [](World& w) { w.config.tls = TlsMode::Plain; }, "FFFFFF"},
        {"TlsDemandedAtLogin", "FFWWWW", [](World& w) { w.config.tlsRequiredAtLogin = true; }},
        {"ImplicitUrlOfAnExplicitServer", "FFFFFF", [](World& w) { w.scheme = "ftps"; }, "FFFFFF"},
        {"HandshakeClosed", "FWFFFF", [](World& w) { faults(w, "TLS=close"); }, "FFFFFF"},
        {"HandshakeGarbage", "FWFFFF", [](World& w) { faults(w, "TLS=garbage"); }, "FFFFFF"},
        {"AuthDropped", "FWFFFF", [](World& w) { faults(w, "AUTH=drop"); }, "FFFFFF"},
        {"ProtectionRefused", "FWFFFF", [](World& w) { faults(w, "PROT=reply:536 no"); }, "FFFFFF"},
        {"WrongPassword", "FFFFFF", [](World& w) { w.request.password = "wrong"; }, "FFFFFF"},
        {"AccountWanted", "FFFFFF", [](World& w) { faults(w, "PASS=reply:332 account"); }, "FFFFFF"},
        {"LoginEndedBy421", "FFFFFF", [](World& w) { faults(w, "USER=reply:421 too many"); }, "FFFFFF"},
        {"UserDropped", "FFFFFF", [](World& w) { faults(w, "USER=drop"); }, "FFFFFF"},
        {"Refused", "FFFFFF", [](World& w) { w.listening = false; }, "FFFFFF"},
        {"GreetingRefuses", "FFFFFF", [](World& w) { faults(w, "GREETING=reply:530 go away"); }, "FFFFFF"},
        {"GreetingIs421", "FFFFFF", [](World& w) { faults(w, "GREETING=reply:421 too many"); }, "FFFFFF"},
        {"GreetingDropped", "FFFFFF", [](World& w) { faults(w, "GREETING=drop"); }, "FFFFFF"},
        {"MissingDirectory", "FWFFFF", [](World& w) { w.directory = "/missing/", w.directoryOnDisk = "none"; },
         "FWFFFF"},
        {"NoVerbs", "WWFFWW",
         [](World& w) { faults(w, "rename=reply:500 unknown command", "rm=reply:502 not implemented"); }},
        {"VerbsOfAnotherForm", "WWFFWW", [](World& w) { faults(w, "rename=reply:501 what", "rm=reply:504 what"); }},
        {"OnlyRm", "WWFWWW", [](World& w) { faults(w, "rename=reply:500 unknown command"); }},
        {"LoginLeadsElsewhere", "WWFFWW",
         [](World& w) {
             w.config.startDirectory = "/home", w.directory = "/weekly/", w.directoryOnDisk = "/home/weekly/";
         }},
        {"LoginLeadsElsewhereAndTheUrlSaysSo", "WWWWWW",
         [](World& w) {
             w.config.startDirectory = "/home", w.directory = "//home/weekly/", w.directoryOnDisk = "/home/weekly/";
         }},
        {"NoSize", "FWWWWW", [](World& w) { faults(w, "SIZE=reply:500 unknown command"); }},
        {"SizeDenied", "FWWWWW", [](World& w) { faults(w, "SIZE=reply:502 off"); }},
        {"NamesRefused", "WWWWFW", [](World& w) { faults(w, "NLST=reply:550 no"); }, "WWWWFW"},
        {"NamesRefusedImplicit", "WWWWFW", [](World& w) { implicit(w), faults(w, "NLST=reply:550 no"); }, "WWWWFW"},
        {"ListingRefused", "WWFFWF", [](World& w) { faults(w, "LIST=reply:550 no"); }},
        {"TypeRefused", "FFFFFF", [](World& w) { faults(w, "TYPE=reply:504 no"); }, "FFWWFW"},
        {"DataPortClosed", "FFFFFF", [](World& w) { faults(w, "LISTEN=refuse"); }, "FFWWFW"},
        {"DataUnavailable", "FFFFFF", [](World& w) { faults(w, "EPSV=reply:425 no", "PASV=reply:425 no"); }, "FFWWFW"},
    };
    return all;
}

void PrintTo(const Kind& kind, std::ostream* stream) { *stream << kind.id; }

std::string idOf(const testing::TestParamInfo<Kind>& of) { return of.param.id; }

std::vector<Kind> kindsNamed(const std::vector<std::string>& ids)
{
    std::vector<Kind> those;
    std::copy_if(kinds().begin(), kinds().end(), std::back_inserter(those),
                 [&ids](const Kind& each) { return std::find(ids.begin(), ids.end(), each.id) != ids.end(); });
    return those;
}

OfAKind::OfAKind()
{
    World world{config, request, authority};
    GetParam().make(world);
    if (!world.machineTrusts.empty()) {
        trustByDefault(world.machineTrusts);
    }
    const std::string onDisk = world.directoryOnDisk.empty() ? world.directory : world.directoryOnDisk;
    if (onDisk != "none") {
        m_folder = served(onDisk);
        std::filesystem::create_directories(m_folder);
    }
    serve();
    const std::string path = std::regex_replace(url(world.directory), std::regex("localhost"), world.host);
    askAbout(world.scheme.empty() ? path : world.scheme + path.substr(path.find(':')));
    question.clearLogin = true;
    if (!world.listening) {
        stopServing();
    }
}

void OfAKind::keep(const std::string& name, const std::string& content) const
{
    if (!m_folder.empty()) {
        writeFile(m_folder + "/" + name, content);
    }
}
