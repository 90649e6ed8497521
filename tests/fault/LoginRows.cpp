// USER, PASS, PBSZ, PROT and PWD.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kUser = {
    Row("Reply430", kConnect, {"USER=reply:430 no"}, {CURLE_LOGIN_DENIED}),
    Row("Reply500", kList, {"USER=reply:500 no"}, {CURLE_LOGIN_DENIED}).leaving(""),
    Row("Reply530", kDownload, {"USER=reply:530 no"}, {CURLE_LOGIN_DENIED}).leaving(""),
    Row("Reply550ForAnUpload", kUpload, {"USER=reply:550 no"}, {CURLE_LOGIN_DENIED}).leaving(kNoFile),
    Row("Reply332", kConnect, {"USER=reply:332 account"}, {CURLE_LOGIN_DENIED}),
    Row("Reply421", kConnect, {"USER=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}),
    Row("Closed", kConnect, {"USER=drop"}, {CURLE_RECV_ERROR}),
    Row("Reset", kConnect, {"USER=reset"}, {CURLE_RECV_ERROR}),
    Row("Silence", kList, {"USER=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("WithoutALineEnd", kList, {"USER=reply:331 passw\\c"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("Code000", kList, {"USER=reply:000 well"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("FourDigits", kList, {"USER=reply:3310 password"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("SeveralLines", kList, {"USER#1=reply:331-one\\r\\n331 two", "PASS=reply:530 no"}, {CURLE_LOGIN_DENIED}),
};
INSTANTIATE_TEST_SUITE_P(User, Fault, testing::ValuesIn(chosen(kUser)), idOf);

const Rows kPass = {
    Row("Reply530", kConnect, {"PASS=reply:530 no"}, {CURLE_LOGIN_DENIED}),
    Row("Reply530ForARename", kRename, {"PASS=reply:530 no"}, {CURLE_LOGIN_DENIED}).leaving(kNoFile),
    Row("Reply331", kConnect, {"PASS=reply:331 again"}, {CURLE_LOGIN_DENIED}),
    Row("Reply332", kConnect, {"PASS=reply:332 account"}, {CURLE_LOGIN_DENIED}),
    Row("Reply421", kUpload, {"PASS=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kNoFile),
    Row("Closed", kConnect, {"PASS=drop"}, {CURLE_RECV_ERROR}),
    Row("Reset", kConnect, {"PASS=reset"}, {CURLE_RECV_ERROR}),
    Row("Silence", kList, {"PASS=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("Split", kList, {"PASS=split"}, {CURLE_OK}).leaving(kNames),
    Row("AMebibyte", kConnect, {"PASS=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine),
};
INSTANTIATE_TEST_SUITE_P(Pass, Fault, testing::ValuesIn(chosen(kPass)), idOf);

const Rows kProtection = {
    Row("PbszRefused", kList, {"PBSZ=reply:500 unknown"}, {CURLE_OK}).leaving(kNames),
    Row("PbszReply421", kConnect, {"PBSZ=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}),
    Row("PbszClosed", kConnect, {"PBSZ=drop"}, {CURLE_RECV_ERROR}),
    Row("PbszReset", kConnect, {"PBSZ=reset"}, {CURLE_RECV_ERROR}),
    Row("PbszSilence", kList, {"PBSZ=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("PbszSeveralLines", kList, {"PBSZ=reply:200-one\\r\\n 500 two\\r\\n200 three"}, {CURLE_OK}).leaving(kNames),
    // Any code ends the reply, so the third line is taken for the answer to what comes next, and so on.
    Row("PbszSeveralLinesOfTwoCodes", kList, {"PBSZ=reply:200-one\\r\\n500 two\\r\\n200 three"},
        {CURLE_FTP_WEIRD_PASV_REPLY})
        .leaving(""),
    Row("ProtRefused536", kDownload, {"PROT=reply:536 no"}, {CURLE_USE_SSL_FAILED}).leaving(""),
    Row("ProtRefused500", kList, {"PROT=reply:500 unknown"}, {CURLE_USE_SSL_FAILED}).leaving(""),
    Row("ProtReply421", kConnect, {"PROT=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}),
    Row("ProtClosed", kConnect, {"PROT=drop"}, {CURLE_RECV_ERROR}),
    Row("ProtSilence", kList, {"PROT=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
};
INSTANTIATE_TEST_SUITE_P(Protection, Fault, testing::ValuesIn(chosen(kProtection)), idOf);

const Rows kPwd = {
    Row("Reply550", kList, {"PWD=reply:550 no"}, {CURLE_OK}).leaving(kNames),
    Row("WithoutQuotes", kDownload, {"PWD=reply:257 here"}, {CURLE_OK}).leaving(kAll),
    Row("QuoteLeftOpen", kList, {"PWD=reply:257 \"/"}, {CURLE_OK, CURLE_WEIRD_SERVER_REPLY})
        .because("8.21.0 refuses a quote left open.")
        .leavingAfter(CURLE_OK, kNames),
    Row("Reply421", kConnect, {"PWD=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}),
    Row("Closed", kUpload, {"PWD=drop"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Reset", kConnect, {"PWD=reset"}, {CURLE_RECV_ERROR}),
    Row("Silence", kList, {"PWD=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1),
    Row("ZeroBytes", kList, {"PWD=reply:257 \"/\\0\\0\" here"}, {CURLE_OK, CURLE_WEIRD_SERVER_REPLY})
        .because("Later releases refuse zero bytes.")
        .leavingAfter(CURLE_OK, kNames),
    Row("AMebibyte", kConnect, {"PWD=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine),
    Row("TwoReplies", kConnect, {"PWD=reply:257 \"/\"\\r\\n421 closing"}, {CURLE_OPERATION_TIMEDOUT}),
};
INSTANTIATE_TEST_SUITE_P(Pwd, Fault, testing::ValuesIn(chosen(kPwd)), idOf);

} // namespace
