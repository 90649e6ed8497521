// CWD, MKD and TYPE.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kCwd = {
    Row("Reply550", kDownload, {"CWD=reply:550 no such directory"}, {CURLE_REMOTE_FILE_NOT_FOUND}).leaving(""),
    Row("Reply550ForTheConnectionTest", kConnect, {"CWD=reply:550 no such directory"}, {CURLE_REMOTE_ACCESS_DENIED}),
    Row("Reply450", kList, {"CWD=reply:450 not now"}, {CURLE_REMOTE_FILE_NOT_FOUND}).leaving(""),
    Row("Reply550ForARename", kRename, {"CWD=reply:550 no such directory"}, {CURLE_REMOTE_FILE_NOT_FOUND})
        .leaving(kNoFile),
    Row("Reply550ForADelete", kDelete, {"CWD=reply:550 no such directory"}, {CURLE_REMOTE_FILE_NOT_FOUND})
        .leaving(kAll),
    Row("Reply421", kDownload, {"CWD=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kDelete, {"CWD=drop"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("Reset", kList, {"CWD=reset"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Silence", kList, {"CWD=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).leaving(""),
    Row("SilenceThenClosed", kDownload, {"CWD=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(""),
};
INSTANTIATE_TEST_SUITE_P(Cwd, Fault, testing::ValuesIn(chosen(kCwd)), idOf);

const Rows kMkd = {
    Row("Reply550", kUpload, {"MKD=reply:550 no"}, {CURLE_REMOTE_FILE_NOT_FOUND}).at("/new/up.bak").leaving(kNoFile),
    Row("Reply550ForWhatExistsMeanwhile", kUpload, {"CWD#1=reply:550 no such", "MKD=reply:550 exists"}, {CURLE_OK})
        .leaving(kUploaded),
    Row("ClaimedOnly", kUpload, {"MKD=reply:257 made"}, {CURLE_REMOTE_FILE_NOT_FOUND})
        .at("/new/up.bak")
        .leaving(kNoFile),
    Row("Reply421", kUpload, {"MKD=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).at("/new/up.bak").leaving(kNoFile),
    Row("Closed", kUpload, {"MKD=drop"}, {CURLE_RECV_ERROR}).at("/new/up.bak").leaving(kNoFile),
    Row("Reset", kUpload, {"MKD=reset"}, {CURLE_RECV_ERROR}).at("/new/up.bak").leaving(kNoFile),
    Row("SilenceThenClosed", kUpload, {"MKD=stall"}, {CURLE_RECV_ERROR})
        .at("/new/up.bak")
        .on(boundedStall)
        .leaving(kNoFile),
    Row("Split", kUpload, {"MKD=split"}, {CURLE_OK}).at("/new/up.bak").leaving(kUploaded),
};
INSTANTIATE_TEST_SUITE_P(Mkd, Fault, testing::ValuesIn(chosen(kMkd)), idOf);

const Rows kType = {
    Row("RefusedForAList", kList, {"TYPE=reply:500 unknown"}, {CURLE_FTP_COULDNT_SET_TYPE}).leaving(""),
    Row("RefusedForADownload", kDownload, {"TYPE=reply:504 no"}, {CURLE_FTP_COULDNT_SET_TYPE}).leaving(""),
    Row("RefusedForAnUpload", kUpload, {"TYPE=reply:504 no"}, {CURLE_FTP_COULDNT_SET_TYPE}).leaving(kNoFile),
    Row("Reply421", kDownload, {"TYPE=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kDownload, {"TYPE=drop"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Reset", kUpload, {"TYPE=reset"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Silence", kList, {"TYPE=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).leaving(""),
    Row("SeveralLines", kDownload, {"TYPE=reply:200-one\\r\\n 500 two\\r\\n200 three"}, {CURLE_OK}).leaving(kAll),
    Row("ZeroBytes", kDownload, {"TYPE=reply:200 \\0\\0"}, {CURLE_OK, CURLE_WEIRD_SERVER_REPLY})
        .because("Later releases refuse zero bytes.")
        .leavingAfter(CURLE_OK, kAll),
};
INSTANTIATE_TEST_SUITE_P(Type, Fault, testing::ValuesIn(chosen(kType)), idOf);

} // namespace
