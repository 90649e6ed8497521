// AUTH, and the TLS handshake on the control connection.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& auth()
{
    static const Rows all = {
        Row("FirstMechanismRefused", kList, {"AUTH#1=reply:500 not SSL"}, {0}).leaving(kNames),
        Row("Refused500", kList, {"AUTH=reply:500 no TLS"}, {64}).leaving(""),
        Row("Refused431", kDownload, {"AUTH=reply:431 not now"}, {64}).leaving(""),
        Row("ServerWithoutTls", kDownload, {}, {64}).on(noTls).leaving(""),
        Row("RenameWithoutTls", kRename, {}, {64}).on(noTls).leaving(kNoFile),
        Row("DeleteWithoutTls", kDelete, {}, {64}).on(noTls).leaving(kAll),
        Row("Reply421", kConnect, {"AUTH=reply:421 closing"}, {28}),
        Row("Closed", kConnect, {"AUTH=drop"}, {56}),
        Row("Reset", kConnect, {"AUTH=reset"}, {56}),
        Row("Silence", kList, {"AUTH=stall"}, {28}).waiting(1),
        Row("Injected", kConnect, {"AUTH=reply:234 TLS next\\r\\n230 logged in"}, {8}),
        Row("Reply334AndClosed", kConnect, {"AUTH=last:334 go on"}, {35}),
        Row("Split", kList, {"AUTH=split"}, {0}).basedOn(kTool).leaving(kNames),
        Row("WithoutALineEnd", kList, {"AUTH=reply:234 TLS n\\c"}, {28}).waiting(1),
        Row("AMebibyte", kConnect, {"AUTH=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool),
    };
    return all;
}

const Rows& handshake()
{
    static const Rows all = {
        Row("Garbage", kConnect, {"TLS=garbage"}, {35, 8}).because(kGlued),
        Row("Closed", kConnect, {"TLS=close"}, {35}),
        Row("Reset", kConnect, {"TLS=reset"}, {35, 56}).because(kReset),
        // The time-out for replies does not count for a handshake: only the server, or 300 seconds, end it.
        Row("SilenceThenClosed", kList, {"TLS=stall"}, {35}).basedOn(kTool).on(boundedStall).leaving(""),
        Row("OldVersion", kConnect, {}, {35}).on([](Scene& scene) { scene.server.maxTlsVersion = TLS1_1_VERSION; }),
        Row("Version12", kList, {}, {0}).basedOn(kTool).leaving(kNames).on([](Scene& scene) {
            scene.server.maxTlsVersion = TLS1_2_VERSION;
        }),
        Row("Version13", kList, {}, {0}).basedOn(kTool).leaving(kNames).on([](Scene& scene) {
            scene.server.minTlsVersion = TLS1_3_VERSION;
        }),
        Row("ImplicitGarbage", kConnect, {"TLS=garbage"}, {35}).basedOn(kTool).on(implicitTls),
        Row("ImplicitClosed", kConnect, {"TLS=close"}, {35}).basedOn(kTool).on(implicitTls),
        Row("ImplicitReset", kConnect, {"TLS=reset"}, {35, 7}).because(kReset).basedOn(kTool).on(implicitTls),
        Row("ImplicitOldVersion", kUpload, {}, {35}).basedOn(kTool).leaving(kNoFile).on([](Scene& scene) {
            implicitTls(scene);
            scene.server.maxTlsVersion = TLS1_1_VERSION;
        }),
        Row("ImplicitClosedForAnUpload", kUpload, {"TLS=close"}, {35}).basedOn(kTool).on(implicitTls).leaving(kNoFile),
    };
    return all;
}

const Rows& certificate()
{
    static const Rows all = {
        Row("Expired", kConnect, {}, {60}).on([](Scene& scene) {
            scene.server.certificate = expired(scene.authority);
        }),
        Row("NotYetValid", kList, {}, {60}).leaving("").on([](Scene& scene) {
            scene.server.certificate = notYetValid(scene.authority);
        }),
        Row("SelfSigned", kDownload, {}, {60}).leaving("").on([](Scene& scene) {
            scene.server.certificate = testserver::makeSelfSigned();
        }),
        Row("OfAnotherCa", kRename, {}, {60}).leaving(kNoFile).on([](Scene& scene) {
            scene.server.certificate = ofAnotherCa();
        }),
        Row("ExpiredForADelete", kDelete, {}, {60}).leaving(kAll).on([](Scene& scene) {
            scene.server.certificate = expired(scene.authority);
        }),
        // The library asks for the chain alone, which the command cannot be told.
        Row("OfAnotherHost", kList, {}, {0}).basedOn(kDocumented).beyondTheTool().leaving(kNames).on([](Scene& scene) {
            testserver::CertificateOptions options;
            options.dnsNames = {"elsewhere.example"};
            options.addresses = {};
            scene.server.certificate = scene.authority.issue(options);
        }),
        // An upload has libcurl's own settings, which ask for the name too.
        Row("OfAnotherHostForAnUpload", kUpload, {}, {60}).leaving(kNoFile).on([](Scene& scene) {
            implicitTls(scene);
            testserver::CertificateOptions options;
            options.dnsNames = {"elsewhere.example"};
            options.addresses = {};
            scene.server.certificate = scene.authority.issue(options);
        }),
        Row("ExpiredForAnUpload", kUpload, {}, {60}).leaving(kNoFile).on([](Scene& scene) {
            implicitTls(scene);
            scene.server.certificate = expired(scene.authority);
        }),
        Row("OfAnotherCaForAnUpload", kUpload, {}, {60}).leaving(kNoFile).on([](Scene& scene) {
            implicitTls(scene);
            scene.server.certificate = ofAnotherCa();
        }),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(Auth, Fault, testing::ValuesIn(auth()), nameOf);
INSTANTIATE_TEST_SUITE_P(Auth, Tool, testing::ValuesIn(replayed(auth())), nameOf);
INSTANTIATE_TEST_SUITE_P(Handshake, Fault, testing::ValuesIn(handshake()), nameOf);
INSTANTIATE_TEST_SUITE_P(Handshake, Tool, testing::ValuesIn(replayed(handshake())), nameOf);
INSTANTIATE_TEST_SUITE_P(Certificate, Fault, testing::ValuesIn(certificate()), nameOf);
INSTANTIATE_TEST_SUITE_P(Certificate, Tool, testing::ValuesIn(replayed(certificate())), nameOf);

} // namespace
