// RETR, what comes over its data connection, and the reply that ends it.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kRetr = {
    Row("Reply550", kDownload, {"RETR=reply:550 no such file"}, {CURLE_REMOTE_FILE_NOT_FOUND}).leaving(""),
    Row("Reply450", kDownload, {"RETR=reply:450 not now"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(""),
    Row("Reply500", kDownload, {"RETR=reply:500 unknown"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(""),
    Row("Reply226AtOnce", kDownload, {"RETR=reply:226 done"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(""),
    Row("Reply421", kDownload, {"RETR=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kDownload, {"RETR=drop"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Reset", kDownload, {"RETR=reset"}, {CURLE_SEND_ERROR, CURLE_RECV_ERROR}).racing(kResetWithData).leaving(""),
    Row("SilenceThenClosed", kDownload, {"RETR=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(""),
    Row("Split", kDownload, {"RETR=split"}, {CURLE_OK}).leaving(kAll),
};
INSTANTIATE_TEST_SUITE_P(Retr, Fault, testing::ValuesIn(chosen(kRetr)), idOf);

const Rows kData = {
    Row("DroppedAfterNothing", kDownload, {"DATA=drop-after:0"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(""),
    Row("DroppedAfterSome", kDownload, {"DATA=drop-after:50000"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(50000),
    Row("DroppedBeforeTheLastByte", kDownload, {"DATA=drop-after:99999"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(99999),
    Row("DroppedWithSuccessClaimed", kDownload, {"DATA=drop-after:50000", "DONE=reply:226 done"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(50000),
    Row("ClosedEarlyWithSuccessClaimed", kDownload, {"DATA=claim-after:50000"}, {CURLE_PARTIAL_FILE}).leaving(50000),
    Row("NothingWithSuccessClaimed", kDownload, {"DATA=claim-after:0"}, {CURLE_PARTIAL_FILE}).leaving(""),
    Row("ClosedEarlyWithSizeUnknown", kDownload, {"SIZE=reply:500 unknown", "DATA=claim-after:50000"}, {CURLE_OK})
        .leaving(50000),
    Row("DroppedWithSizeUnknown", kDownload, {"SIZE=reply:500 unknown", "DATA=drop-after:50000", "DONE=reply:226 done"},
        {CURLE_OK})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(50000),
    Row("ResetAfterSome", kDownload, {"DATA=reset-after:50000"}, {CURLE_RECV_ERROR}).leavingAtMost(50000),
    Row("StalledThenDropped", kDownload, {"DATA=stall-after:50000"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .on(boundedStall)
        .leaving(50000),
    Row("Slow", kDownload, {"DATA=slow:200000"}, {CURLE_OK}).leaving(kAll),
    Row("ClosedInPlaceOfTls", kDownload, {"DATA=close"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(""),
    Row("GarbageInPlaceOfTls", kDownload, {"DATA=garbage"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(""),
    Row("NoTls", kDownload, {"DATA=plain"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(""),
    Row("ExpiredCertificate", kDownload, {},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving("")
        .on([](Scene& scene) { scene.server.dataCertificate = expired(scene.authority); }),
    Row("NotYetValidCertificate", kDownload, {},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving("")
        .on([](Scene& scene) { scene.server.dataCertificate = notYetValid(scene.authority); }),
    Row("SelfSignedCertificate", kDownload, {},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving("")
        .on([](Scene& scene) { scene.server.dataCertificate = testserver::makeSelfSigned(); }),
};
INSTANTIATE_TEST_SUITE_P(DownloadData, Fault, testing::ValuesIn(chosen(kData)), idOf);

// All the data has arrived: the file is complete, whatever the server replies.
const Rows kDone = {
    Row("Reply426", kDownload, {"DONE=reply:426 aborted"}, {CURLE_PARTIAL_FILE}).leaving(kAll),
    Row("Reply451", kDownload, {"DONE=reply:451 broken"}, {CURLE_PARTIAL_FILE}).leaving(kAll),
    Row("Reply550", kDownload, {"DONE=reply:550 no"}, {CURLE_PARTIAL_FILE}).leaving(kAll),
    Row("Reply200", kDownload, {"DONE=reply:200 done"}, {CURLE_PARTIAL_FILE}).leaving(kAll),
    Row("Reply552", kDownload, {"DONE=reply:552 full"}, {CURLE_REMOTE_DISK_FULL}).leaving(kAll),
    Row("Reply250", kDownload, {"DONE=reply:250 done"}, {CURLE_OK}).leaving(kAll),
    Row("Reply421", kDownload, {"DONE=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kAll),
    Row("Closed", kDownload, {"DONE=drop"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("Reset", kDownload, {"DONE=reset"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("SilenceThenClosed", kDownload, {"DONE=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(kAll),
    Row("HalfAndClosed", kDownload, {"DONE=last:226 do\\c"}, {CURLE_RECV_ERROR}).leaving(kAll),
    Row("Split", kDownload, {"DONE=split"}, {CURLE_OK}).leaving(kAll),
    Row("AMebibyte", kDownload, {"DONE=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine).leaving(kAll),
    Row("EndlessLines", kDownload, {"DONE=endless:226-and another thing"}, {CURLE_RECV_ERROR})
        .in814(CURLE_OPERATION_TIMEDOUT, kEndless)
        .lasting(kReplyLimit)
        .leaving(kAll),
};
INSTANTIATE_TEST_SUITE_P(DownloadDone, Fault, testing::ValuesIn(chosen(kDone)), idOf);

} // namespace
