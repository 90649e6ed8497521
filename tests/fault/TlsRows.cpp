// AUTH, and the TLS handshake on the control connection.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kAuth = {
    Row("FirstMechanismRefused", kList, {"AUTH#1=reply:500 not SSL"}, {CURLE_OK}).leaving(kNames),
    Row("Refused500", kList, {"AUTH=reply:500 no TLS"}, {CURLE_USE_SSL_FAILED}).leaving(""),
    Row("Refused431", kDownload, {"AUTH=reply:431 not now"}, {CURLE_USE_SSL_FAILED}).leaving(""),
    Row("ServerWithoutTls", kDownload, {}, {CURLE_USE_SSL_FAILED}).on(noTls).leaving(""),
    Row("RenameWithoutTls", kRename, {}, {CURLE_USE_SSL_FAILED}).on(noTls).leaving(kNoFile),
    Row("DeleteWithoutTls", kDelete, {}, {CURLE_USE_SSL_FAILED}).on(noTls).leaving(kAll),
    Row("Reply421", kConnect, {"AUTH=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}),
    Row("Closed", kConnect, {"AUTH=drop"}, {CURLE_RECV_ERROR}),
    Row("Reset", kConnect, {"AUTH=reset"}, {CURLE_RECV_ERROR}),
    Row("Silence", kList, {"AUTH=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("Injected", kConnect, {"AUTH=reply:234 TLS next\\r\\n230 logged in"}, {CURLE_WEIRD_SERVER_REPLY}),
    Row("Reply334AndClosed", kConnect, {"AUTH=last:334 go on"}, {CURLE_SSL_CONNECT_ERROR}),
    Row("Split", kList, {"AUTH=split"}, {CURLE_OK}).leaving(kNames),
    Row("WithoutALineEnd", kList, {"AUTH=reply:234 TLS n\\c"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("AMebibyte", kConnect, {"AUTH=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine),
};
INSTANTIATE_TEST_SUITE_P(Auth, Fault, testing::ValuesIn(chosen(kAuth)), idOf);

const Rows kHandshake = {
    Row("Garbage", kConnect, {"TLS=garbage"}, {CURLE_SSL_CONNECT_ERROR, CURLE_WEIRD_SERVER_REPLY}).racing(kGlued),
    Row("Closed", kConnect, {"TLS=close"}, {CURLE_SSL_CONNECT_ERROR}),
    Row("Reset", kConnect, {"TLS=reset"}, {CURLE_SSL_CONNECT_ERROR, CURLE_RECV_ERROR}).racing(kReset),
    // The reply time-out does not apply to a handshake: only the server, or 300 seconds, end it.
    Row("SilenceThenClosed", kList, {"TLS=stall"}, {CURLE_SSL_CONNECT_ERROR}).on(boundedStall).leaving(""),
    Row("OldVersion", kConnect, {}, {CURLE_SSL_CONNECT_ERROR}).on([](Scene& scene) {
        scene.server.maxTlsVersion = TLS1_1_VERSION;
    }),
    Row("Version12", kList, {}, {CURLE_OK}).leaving(kNames).on([](Scene& scene) {
        scene.server.maxTlsVersion = TLS1_2_VERSION;
    }),
    Row("Version13", kList, {}, {CURLE_OK}).leaving(kNames).on([](Scene& scene) {
        scene.server.minTlsVersion = TLS1_3_VERSION;
    }),
    Row("ImplicitGarbage", kConnect, {"TLS=garbage"}, {CURLE_SSL_CONNECT_ERROR}).on(implicitTls),
    Row("ImplicitClosed", kConnect, {"TLS=close"}, {CURLE_SSL_CONNECT_ERROR}).on(implicitTls),
    Row("ImplicitReset", kConnect, {"TLS=reset"}, {CURLE_SSL_CONNECT_ERROR, CURLE_COULDNT_CONNECT})
        .racing(kReset)
        .on(implicitTls),
    Row("ImplicitOldVersion", kUpload, {}, {CURLE_SSL_CONNECT_ERROR}).leaving(kNoFile).on([](Scene& scene) {
        implicitTls(scene);
        scene.server.maxTlsVersion = TLS1_1_VERSION;
    }),
    Row("ImplicitClosedForAnUpload", kUpload, {"TLS=close"}, {CURLE_SSL_CONNECT_ERROR})
        .on(implicitTls)
        .leaving(kNoFile),
};
INSTANTIATE_TEST_SUITE_P(Handshake, Fault, testing::ValuesIn(chosen(kHandshake)), idOf);

const Rows kCertificate = {
    Row("Expired", kConnect, {}, {CURLE_PEER_FAILED_VERIFICATION}).on([](Scene& scene) {
        scene.server.certificate = expired(scene.authority);
    }),
    Row("NotYetValid", kList, {}, {CURLE_PEER_FAILED_VERIFICATION}).leaving("").on([](Scene& scene) {
        scene.server.certificate = notYetValid(scene.authority);
    }),
    Row("SelfSigned", kDownload, {}, {CURLE_PEER_FAILED_VERIFICATION}).leaving("").on([](Scene& scene) {
        scene.server.certificate = testserver::makeSelfSigned();
    }),
    Row("OfAnotherCa", kRename, {}, {CURLE_PEER_FAILED_VERIFICATION}).leaving(kNoFile).on([](Scene& scene) {
        scene.server.certificate = ofAnotherCa();
    }),
    Row("ExpiredForADelete", kDelete, {}, {CURLE_PEER_FAILED_VERIFICATION}).leaving(kAll).on([](Scene& scene) {
        scene.server.certificate = expired(scene.authority);
    }),
    // The library verifies the chain but not the name, for which the command has no option.
    Row("OfAnotherHost", kList, {}, {CURLE_OK}).beyondTheTool().leaving(kNames).on([](Scene& scene) {
        scene.server.certificate = ofAnotherHost(scene.authority);
    }),
    // An upload uses libcurl's defaults, which verify the name too.
    Row("OfAnotherHostForAnUpload", kUpload, {}, {CURLE_PEER_FAILED_VERIFICATION})
        .leaving(kNoFile)
        .on([](Scene& scene) {
            implicitTls(scene);
            scene.server.certificate = ofAnotherHost(scene.authority);
        }),
    Row("ExpiredForAnUpload", kUpload, {}, {CURLE_PEER_FAILED_VERIFICATION}).leaving(kNoFile).on([](Scene& scene) {
        implicitTls(scene);
        scene.server.certificate = expired(scene.authority);
    }),
    Row("OfAnotherCaForAnUpload", kUpload, {}, {CURLE_PEER_FAILED_VERIFICATION}).leaving(kNoFile).on([](Scene& scene) {
        implicitTls(scene);
        scene.server.certificate = ofAnotherCa();
    }),
};
INSTANTIATE_TEST_SUITE_P(Certificate, Fault, testing::ValuesIn(chosen(kCertificate)), idOf);

} // namespace
