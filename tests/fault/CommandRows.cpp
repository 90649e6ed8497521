// The two commands after the visit of the directory, and the visit itself.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kRenameRows = {
    Row("Reply500", kRename, {"rename=reply:500 unknown"}, {CURLE_QUOTE_ERROR}).leaving(kNoFile),
    Row("Reply550", kRename, {"rename=reply:550 no such file"}, {CURLE_QUOTE_ERROR}).leaving(kNoFile),
    Row("Reply450", kRename, {"rename=reply:450 busy"}, {CURLE_QUOTE_ERROR}).leaving(kNoFile),
    Row("Reply200WithoutEffect", kRename, {"rename=reply:200 ok"}, {CURLE_OK}).leaving(kNoFile),
    Row("Reply150WithoutEffect", kRename, {"rename=reply:150 wait"}, {CURLE_OK}).leaving(kNoFile),
    Row("Reply421", kRename, {"rename=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kNoFile),
    Row("Closed", kRename, {"rename=drop"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Reset", kRename, {"rename=reset"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("SilenceThenClosed", kRename, {"rename=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(kNoFile),
    Row("HalfAndClosed", kRename, {"rename=last:250 rena\\c"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Split", kRename, {"rename=split"}, {CURLE_OK}).leaving(kAll),
    Row("SeveralLines", kRename, {"rename=reply:550-one\\r\\n550 two"}, {CURLE_QUOTE_ERROR}).leaving(kNoFile),
    Row("AMebibyte", kRename, {"rename=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine).leaving(kAll),
};
INSTANTIATE_TEST_SUITE_P(RenameCommand, Fault, testing::ValuesIn(chosen(kRenameRows)), idOf);

const Rows kRm = {
    Row("Reply500", kDelete, {"rm=reply:500 unknown"}, {CURLE_QUOTE_ERROR}).leaving(kAll),
    Row("Reply550", kDelete, {"rm=reply:550 no such file"}, {CURLE_QUOTE_ERROR}).leaving(kAll),
    Row("Reply226WithoutEffect", kDelete, {"rm=reply:226 ok"}, {CURLE_OK}).leaving(kAll),
    Row("Reply350WithoutEffect", kDelete, {"rm=reply:350 more"}, {CURLE_OK}).leaving(kAll),
    Row("Reply421", kDelete, {"rm=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kAll),
    Row("Closed", kDelete, {"rm=drop"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("Reset", kDelete, {"rm=reset"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("SilenceThenClosed", kDelete, {"rm=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(kAll),
    Row("Split", kDelete, {"rm=split"}, {CURLE_OK}).leaving(kNoFile),
    Row("ZeroBytes", kDelete, {"rm=reply:550 \\0\\0"}, {CURLE_QUOTE_ERROR, CURLE_WEIRD_SERVER_REPLY})
        .because("Later releases refuse zero bytes.")
        .leaving(kAll),
};
INSTANTIATE_TEST_SUITE_P(RmCommand, Fault, testing::ValuesIn(chosen(kRm)), idOf);

// If the visit fails, the command is not sent.
const Rows kVisit = {
    Row("ListRefused", kRename, {"LIST=reply:550 no"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(kNoFile),
    Row("ListRefusedForADelete", kDelete, {"LIST=reply:500 unknown"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(kAll),
    Row("ListReply450", kDelete, {"LIST=reply:450 no files"}, {CURLE_OK}).leaving(kNoFile),
    Row("DataDropped", kRename, {"DATA=drop-after:10"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(kNoFile),
    Row("DataReset", kDelete, {"DATA=reset-after:10"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("DataWithoutTls", kDelete, {"DATA=plain"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(kAll),
    Row("Done426", kDelete, {"DONE=reply:426 aborted"}, {CURLE_PARTIAL_FILE}).leaving(kAll),
    Row("Done421", kRename, {"DONE=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kNoFile),
    Row("DoneClosed", kRename, {"DONE=drop"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
};
INSTANTIATE_TEST_SUITE_P(Visit, Fault, testing::ValuesIn(chosen(kVisit)), idOf);

} // namespace
