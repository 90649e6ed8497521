// The connection itself and the greeting.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& refused()
{
    static const Rows all = {
        Row("NobodyListens", kConnect, {}, {7}).on([](Scene& scene) { scene.serverGone = true; }),
        Row("Closed", kConnect, {"GREETING=drop"}, {56}),
        Row("ClosedForAnUpload", kUpload, {"GREETING=drop"}, {56}).leaving(kNoFile),
        Row("Reset", kConnect, {"GREETING=reset"}, {56, 7}).because("8.21.0 calls it a failure to connect."),
        Row("Reply120", kConnect, {"GREETING=reply:120 in a while"}, {8}),
        Row("Reply500", kConnect, {"GREETING=reply:500 no"}, {8}),
        Row("Reply530", kDownload, {"GREETING=reply:530 no"}, {8}).leaving(""),
        Row("Reply421", kConnect, {"GREETING=reply:421 too many users"}, {28}),
        Row("Reply421ForAnUpload", kUpload, {"GREETING=reply:421 too many users"}, {28}).leaving(kNoFile),
        Row("ImplicitTlsAtAPlainPort", kConnect, {}, {35}).on([](Scene& scene) {
            noTls(scene);
            scene.scheme = "ftps";
        }),
        Row("HalfAndClosed", kConnect, {"GREETING=last:220 rea\\c"}, {56}).basedOn(kTool),
    };
    return all;
}

const Rows& silent()
{
    static const Rows all = {
        Row("Silence", kList, {"GREETING=stall"}, {28}).waiting(1).leaving(""),
        Row("NotFtp", kList, {"GREETING=reply:HTTP/1.1 400 Bad Request\\r\\n"}, {28}).waiting(1),
        Row("CodeAlone", kList, {"GREETING=reply:220"}, {28}).waiting(1),
        Row("FiveDigits", kList, {"GREETING=reply:22000 ready"}, {28}).waiting(1),
        Row("WithoutALineEnd", kList, {"GREETING=reply:220 rea\\c"}, {28}).waiting(1),
        Row("SeveralLinesWithoutTheLast", kList, {"GREETING=reply:220-well\\r\\n220-come"}, {28}).waiting(1),
        Row("ExplicitTlsAtAnImplicitPort", kList, {}, {28}).waiting(1).on([](Scene& scene) {
            implicitTls(scene);
            scene.scheme = "ftp";
        }),
        Row("AMebibyte", kList, {"GREETING=pad:1048576"}, {56, 100}).because(kLongLine).waiting(kAmple),
        Row("EndlessLines", kList, {"GREETING=endless:220-and another thing"}, {56, 28}).because(kEndless).waiting(1),
    };
    return all;
}

// What the library itself allows for connecting, without being told.
const Rows& connecting()
{
    static const Rows all = {
        Row("SilenceForATest", kConnect, {"GREETING=stall"}, {28})
            .basedOn(kDocumented)
            .hastened()
            .on(stallBeyondConnecting),
        Row("SilenceForADownload", kDownload, {"GREETING=stall"}, {28})
            .basedOn(kDocumented)
            .hastened()
            .on(stallBeyondConnecting)
            .leaving(""),
        Row("SilenceForAnUpload", kUpload, {"GREETING=stall"}, {28})
            .basedOn(kDocumented)
            .hastened()
            .on(stallBeyondConnecting)
            .leaving(kNoFile),
        Row("SilenceAfterThePassword", kDownload, {"PASS=stall"}, {28})
            .basedOn(kDocumented)
            .hastened()
            .on(stallBeyondConnecting)
            .leaving(""),
    };
    return all;
}

const Rows& accepted()
{
    static const Rows all = {
        Row("LoggedInAlready", kList, {"GREETING=reply:230 come in"}, {0}).leaving(kNames),
        Row("SeveralLines", kList, {"GREETING=reply:220-one\\r\\n 221 two\\r\\n220-three\\r\\n220 four"}, {0})
            .basedOn(kTool)
            .leaving(kNames),
        Row("Split", kList, {"GREETING=split"}, {0}).basedOn(kTool).leaving(kNames),
        Row("Late", kList, {"GREETING=delay:200"}, {0}).basedOn(kTool).leaving(kNames),
        Row("LineFeedsOnly", kList, {"GREETING=reply:220-one\\n220 two\\n\\c"}, {0}).basedOn(kTool).leaving(kNames),
        Row("EmptyLinesFirst", kList, {"GREETING=reply:\\r\\n\\r\\n220 ready"}, {0}).basedOn(kTool).leaving(kNames),
        Row("ZeroBytes", kList, {"GREETING=reply:220 re\\0a\\0dy"}, {0, 8})
            .because("8.21.0 refuses zero bytes.")
            .basedOn(kTool)
            .leavingAfter(0, kNames),
        Row("Eight000Bytes", kList, {"GREETING=pad:8000"}, {0}).basedOn(kTool).leaving(kNames),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(GreetingRefused, Fault, testing::ValuesIn(refused()), nameOf);
INSTANTIATE_TEST_SUITE_P(GreetingRefused, Tool, testing::ValuesIn(replayed(refused())), nameOf);
INSTANTIATE_TEST_SUITE_P(GreetingSilent, Fault, testing::ValuesIn(silent()), nameOf);
INSTANTIATE_TEST_SUITE_P(Connecting, Fault, testing::ValuesIn(connecting()), nameOf);
INSTANTIATE_TEST_SUITE_P(GreetingAccepted, Fault, testing::ValuesIn(accepted()), nameOf);
INSTANTIATE_TEST_SUITE_P(GreetingAccepted, Tool, testing::ValuesIn(replayed(accepted())), nameOf);

} // namespace
