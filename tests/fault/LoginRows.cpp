// USER, PASS, PBSZ, PROT and PWD.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& user()
{
    static const Rows all = {
        Row("Reply430", kConnect, {"USER=reply:430 no"}, {67}),
        Row("Reply500", kList, {"USER=reply:500 no"}, {67}).leaving(""),
        Row("Reply530", kDownload, {"USER=reply:530 no"}, {67}).leaving(""),
        Row("Reply550ForAnUpload", kUpload, {"USER=reply:550 no"}, {67}).leaving(kNoFile),
        Row("Reply332", kConnect, {"USER=reply:332 account"}, {67}),
        Row("Reply421", kConnect, {"USER=reply:421 closing"}, {28}),
        Row("Closed", kConnect, {"USER=drop"}, {56}),
        Row("Reset", kConnect, {"USER=reset"}, {56}),
        Row("Silence", kList, {"USER=stall"}, {28}).waiting(1),
        Row("WithoutALineEnd", kList, {"USER=reply:331 passw\\c"}, {28}).waiting(1),
        Row("Code000", kList, {"USER=reply:000 well"}, {28}).waiting(1),
        Row("FourDigits", kList, {"USER=reply:3310 password"}, {28}).waiting(1),
        Row("SeveralLines", kList, {"USER#1=reply:331-one\\r\\n331 two", "PASS=reply:530 no"}, {67}).basedOn(kTool),
    };
    return all;
}

const Rows& pass()
{
    static const Rows all = {
        Row("Reply530", kConnect, {"PASS=reply:530 no"}, {67}),
        Row("Reply530ForARename", kRename, {"PASS=reply:530 no"}, {67}).leaving(kNoFile),
        Row("Reply331", kConnect, {"PASS=reply:331 again"}, {67}),
        Row("Reply332", kConnect, {"PASS=reply:332 account"}, {67}),
        Row("Reply421", kUpload, {"PASS=reply:421 closing"}, {28}).leaving(kNoFile),
        Row("Closed", kConnect, {"PASS=drop"}, {56}),
        Row("Reset", kConnect, {"PASS=reset"}, {56}),
        Row("Silence", kList, {"PASS=stall"}, {28}).waiting(1),
        Row("Split", kList, {"PASS=split"}, {0}).basedOn(kTool).leaving(kNames),
        Row("AMebibyte", kConnect, {"PASS=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool),
    };
    return all;
}

const Rows& protection()
{
    static const Rows all = {
        Row("PbszRefused", kList, {"PBSZ=reply:500 unknown"}, {0}).leaving(kNames),
        Row("PbszReply421", kConnect, {"PBSZ=reply:421 closing"}, {28}).basedOn(kTool),
        Row("PbszClosed", kConnect, {"PBSZ=drop"}, {56}).basedOn(kTool),
        Row("PbszReset", kConnect, {"PBSZ=reset"}, {56}).basedOn(kTool),
        Row("PbszSilence", kList, {"PBSZ=stall"}, {28}).basedOn(kDocumented).waiting(1),
        Row("PbszSeveralLines", kList, {"PBSZ=reply:200-one\\r\\n 500 two\\r\\n200 three"}, {0})
            .basedOn(kTool)
            .leaving(kNames),
        // Any code ends the reply, so the third line is taken for the answer to what comes next, and so on.
        Row("PbszSeveralLinesOfTwoCodes", kList, {"PBSZ=reply:200-one\\r\\n500 two\\r\\n200 three"}, {13})
            .basedOn(kTool)
            .leaving(""),
        Row("ProtRefused536", kDownload, {"PROT=reply:536 no"}, {64}).leaving(""),
        Row("ProtRefused500", kList, {"PROT=reply:500 unknown"}, {64}).leaving(""),
        Row("ProtReply421", kConnect, {"PROT=reply:421 closing"}, {28}).basedOn(kTool),
        Row("ProtClosed", kConnect, {"PROT=drop"}, {56}).basedOn(kTool),
        Row("ProtSilence", kList, {"PROT=stall"}, {28}).basedOn(kDocumented).waiting(1),
    };
    return all;
}

const Rows& pwd()
{
    static const Rows all = {
        Row("Reply550", kList, {"PWD=reply:550 no"}, {0}).leaving(kNames),
        Row("WithoutQuotes", kDownload, {"PWD=reply:257 here"}, {0}).leaving(kAll),
        Row("QuoteLeftOpen", kList, {"PWD=reply:257 \"/"}, {0, 8})
            .because("8.21.0 refuses a quote left open.")
            .leavingAfter(0, kNames),
        Row("Reply421", kConnect, {"PWD=reply:421 closing"}, {28}).basedOn(kTool),
        Row("Closed", kUpload, {"PWD=drop"}, {56}).basedOn(kTool).leaving(kNoFile),
        Row("Reset", kConnect, {"PWD=reset"}, {56}).basedOn(kTool),
        Row("Silence", kList, {"PWD=stall"}, {28}).basedOn(kDocumented).waiting(1),
        Row("ZeroBytes", kList, {"PWD=reply:257 \"/\\0\\0\" here"}, {0, 8})
            .because("Later releases refuse zero bytes.")
            .basedOn(kTool)
            .leavingAfter(0, kNames),
        Row("AMebibyte", kConnect, {"PWD=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool),
        Row("TwoReplies", kConnect, {"PWD=reply:257 \"/\"\\r\\n421 closing"}, {28}).basedOn(kTool),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(User, Fault, testing::ValuesIn(user()), nameOf);
INSTANTIATE_TEST_SUITE_P(User, Tool, testing::ValuesIn(replayed(user())), nameOf);
INSTANTIATE_TEST_SUITE_P(Pass, Fault, testing::ValuesIn(pass()), nameOf);
INSTANTIATE_TEST_SUITE_P(Pass, Tool, testing::ValuesIn(replayed(pass())), nameOf);
INSTANTIATE_TEST_SUITE_P(Protection, Fault, testing::ValuesIn(protection()), nameOf);
INSTANTIATE_TEST_SUITE_P(Protection, Tool, testing::ValuesIn(replayed(protection())), nameOf);
INSTANTIATE_TEST_SUITE_P(Pwd, Fault, testing::ValuesIn(pwd()), nameOf);
INSTANTIATE_TEST_SUITE_P(Pwd, Tool, testing::ValuesIn(replayed(pwd())), nameOf);

} // namespace
