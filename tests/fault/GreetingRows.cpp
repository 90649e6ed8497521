// The connection itself and the greeting.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kRefused = {
    Row("NobodyListens", kConnect, {}, {CURLE_COULDNT_CONNECT}).on([](Scene& scene) { scene.serverGone = true; }),
    Row("Closed", kConnect, {"GREETING=drop"}, {CURLE_RECV_ERROR}),
    Row("ClosedForAnUpload", kUpload, {"GREETING=drop"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Reset", kConnect, {"GREETING=reset"}, {CURLE_RECV_ERROR, CURLE_COULDNT_CONNECT})
        .racing("A reset that is quick enough looks like no connection; 8.21.0 always calls it that."),
    Row("Reply120", kConnect, {"GREETING=reply:120 in a while"}, {CURLE_WEIRD_SERVER_REPLY}),
    Row("Reply500", kConnect, {"GREETING=reply:500 no"}, {CURLE_WEIRD_SERVER_REPLY}),
    Row("Reply530", kDownload, {"GREETING=reply:530 no"}, {CURLE_WEIRD_SERVER_REPLY}).leaving(""),
    Row("Reply421", kConnect, {"GREETING=reply:421 too many users"}, {CURLE_OPERATION_TIMEDOUT}),
    Row("Reply421ForAnUpload", kUpload, {"GREETING=reply:421 too many users"}, {CURLE_OPERATION_TIMEDOUT})
        .leaving(kNoFile),
    Row("ImplicitTlsAtAPlainPort", kConnect, {}, {CURLE_SSL_CONNECT_ERROR}).on([](Scene& scene) {
        noTls(scene);
        scene.scheme = "ftps";
    }),
    Row("HalfAndClosed", kConnect, {"GREETING=last:220 rea\\c"}, {CURLE_RECV_ERROR}),
};
INSTANTIATE_TEST_SUITE_P(GreetingRefused, Fault, testing::ValuesIn(chosen(kRefused)), idOf);

const Rows kSilent = {
    Row("Silence", kList, {"GREETING=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).leaving(""),
    Row("NotFtp", kList, {"GREETING=reply:HTTP/1.1 400 Bad Request\\r\\n"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("CodeAlone", kList, {"GREETING=reply:220"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("FiveDigits", kList, {"GREETING=reply:22000 ready"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("WithoutALineEnd", kList, {"GREETING=reply:220 rea\\c"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("SeveralLinesWithoutTheLast", kList, {"GREETING=reply:220-well\\r\\n220-come"}, {CURLE_OPERATION_TIMEDOUT})
        .waiting(1),
    Row("ExplicitTlsAtAnImplicitPort", kList, {}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).on([](Scene& scene) {
        implicitTls(scene);
        scene.scheme = "ftp";
    }),
    Row("AMebibyte", kList, {"GREETING=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine).waiting(kAmple),
    Row("EndlessLines", kList, {"GREETING=endless:220-and another thing"}, {CURLE_RECV_ERROR})
        .in814(CURLE_OPERATION_TIMEDOUT, kEndless)
        .waiting(1),
};
INSTANTIATE_TEST_SUITE_P(GreetingSilent, Fault, testing::ValuesIn(chosen(kSilent)), idOf);

// The library's own time-out for connecting.
const Rows kConnecting = {
    Row("SilenceForATest", kConnect, {"GREETING=stall"}, {CURLE_OPERATION_TIMEDOUT})
        .hastened()
        .on(stallBeyondConnecting),
    Row("SilenceForADownload", kDownload, {"GREETING=stall"}, {CURLE_OPERATION_TIMEDOUT})
        .hastened()
        .on(stallBeyondConnecting)
        .leaving(""),
    Row("SilenceForAnUpload", kUpload, {"GREETING=stall"}, {CURLE_OPERATION_TIMEDOUT})
        .hastened()
        .on(stallBeyondConnecting)
        .leaving(kNoFile),
    Row("SilenceAfterThePassword", kDownload, {"PASS=stall"}, {CURLE_OPERATION_TIMEDOUT})
        .hastened()
        .on(stallBeyondConnecting)
        .leaving(""),
};
INSTANTIATE_TEST_SUITE_P(Connecting, Fault, testing::ValuesIn(chosen(kConnecting)), idOf);

const Rows kAccepted = {
    Row("LoggedInAlready", kList, {"GREETING=reply:230 come in"}, {CURLE_OK}).leaving(kNames),
    Row("SeveralLines", kList, {"GREETING=reply:220-one\\r\\n 221 two\\r\\n220-three\\r\\n220 four"}, {CURLE_OK})
        .leaving(kNames),
    Row("Split", kList, {"GREETING=split"}, {CURLE_OK}).leaving(kNames),
    Row("Late", kList, {"GREETING=delay:200"}, {CURLE_OK}).leaving(kNames),
    Row("LineFeedsOnly", kList, {"GREETING=reply:220-one\\n220 two\\n\\c"}, {CURLE_OK}).leaving(kNames),
    Row("EmptyLinesFirst", kList, {"GREETING=reply:\\r\\n\\r\\n220 ready"}, {CURLE_OK}).leaving(kNames),
    Row("ZeroBytes", kList, {"GREETING=reply:220 re\\0a\\0dy"}, {CURLE_OK, CURLE_WEIRD_SERVER_REPLY})
        .because("8.21.0 refuses zero bytes.")
        .leavingAfter(CURLE_OK, kNames),
    Row("Eight000Bytes", kList, {"GREETING=pad:8000"}, {CURLE_OK}).leaving(kNames),
};
INSTANTIATE_TEST_SUITE_P(GreetingAccepted, Fault, testing::ValuesIn(chosen(kAccepted)), idOf);

} // namespace
