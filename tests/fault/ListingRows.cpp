// NLST and what comes over its data connection; QUIT, whose reply has a time-out only in a listing.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kNlst = {
    Row("Reply450IsAnEmptyListing", kList, {"NLST=reply:450 no files"}, {CURLE_OK}).leaving(""),
    Row("Reply550", kList, {"NLST=reply:550 no"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(""),
    Row("Reply500", kList, {"NLST=reply:500 unknown"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(""),
    Row("Reply226AtOnce", kList, {"NLST=reply:226 done"}, {CURLE_FTP_COULDNT_RETR_FILE}).leaving(""),
    Row("Reply421", kList, {"NLST=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kList, {"NLST=drop"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Reset", kList, {"NLST=reset"}, {CURLE_SEND_ERROR, CURLE_RECV_ERROR}).racing(kResetWithData).leaving(""),
    Row("Silence", kList, {"NLST=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).leaving(""),
    Row("Split", kList, {"NLST=split"}, {CURLE_OK}).leaving(kNames),
};
INSTANTIATE_TEST_SUITE_P(Nlst, Fault, testing::ValuesIn(chosen(kNlst)), idOf);

const Rows kData = {
    Row("DroppedWith426", kList, {"DATA=drop-after:7"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving("a.bak\n"),
    Row("DroppedWithSuccessClaimed", kList, {"DATA=drop-after:7", "DONE=reply:226 done"}, {CURLE_OK})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving("a.bak\n"),
    Row("ClosedEarlyWithSuccessClaimed", kList, {"DATA=claim-after:7"}, {CURLE_OK}).leaving("a.bak\n"),
    Row("Unannounced", kList, {"DATA=no-close-notify"}, {CURLE_OK})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .leaving(kNames),
    Row("ResetAfterSome", kList, {"DATA=reset-after:7"}, {CURLE_RECV_ERROR}).leavingAtMost("a.bak\n"),
    Row("ClosedInPlaceOfTls", kList, {"DATA=close"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(""),
    Row("GarbageInPlaceOfTls", kList, {"DATA=garbage"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(""),
    Row("NoTls", kList, {"DATA=plain"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving(""),
    Row("ExpiredCertificate", kList, {},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .leaving("")
        .on([](Scene& scene) { scene.server.dataCertificate = expired(scene.authority); }),
    Row("CertificateOfAnotherCa", kConnect, {},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .on([](Scene& scene) { scene.server.dataCertificate = ofAnotherCa(); }),
    Row("StalledThenDropped", kList, {"DATA=stall-after:7"}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_RECV_ERROR, kUnannounced)
        .on(boundedStall)
        .leaving("a.bak\n"),
    Row("StalledInPlaceOfTls", kList, {"DATA=stall"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .on(boundedStall)
        .leaving(""),
};
INSTANTIATE_TEST_SUITE_P(ListingData, Fault, testing::ValuesIn(chosen(kData)), idOf);

const Rows kDone = {
    Row("Reply426", kList, {"DONE=reply:426 aborted"}, {CURLE_PARTIAL_FILE}).leaving(kNames),
    Row("Reply421", kList, {"DONE=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kNames),
    Row("Closed", kList, {"DONE=drop"}, {CURLE_RECV_ERROR}).leaving(kNames),
    Row("Silence", kList, {"DONE=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(kAmple).leaving(kNames),
    Row("Reply250", kList, {"DONE=reply:250 done"}, {CURLE_OK}).leaving(kNames),
    Row("SeveralLines", kList, {"DONE=reply:226-one\\r\\n 426 two\\r\\n226 three"}, {CURLE_OK}).leaving(kNames),
};
INSTANTIATE_TEST_SUITE_P(ListingDone, Fault, testing::ValuesIn(chosen(kDone)), idOf);

// What happens after the result is known does not change it.
const Rows kQuit = {
    Row("Refused", kList, {"QUIT=reply:500 stay"}, {CURLE_OK}).leaving(kNames),
    Row("Reply421", kDownload, {"QUIT=reply:421 closing"}, {CURLE_OK}).leaving(kAll),
    Row("Closed", kDownload, {"QUIT=drop"}, {CURLE_OK}).leaving(kAll),
    Row("Reset", kUpload, {"QUIT=reset"}, {CURLE_OK}).leaving(kUploaded),
    Row("Silence", kList, {"QUIT=stall"}, {CURLE_OK}).waiting(kAmple).leaving(kNames),
    Row("WithoutALineEnd", kList, {"QUIT=reply:221 good\\c"}, {CURLE_OK}).waiting(kAmple).leaving(kNames),
    Row("AMebibyte", kDownload, {"QUIT=pad:1048576"}, {CURLE_OK}).leaving(kAll),
    Row("ZeroBytes", kConnect, {"QUIT=reply:221 \\0\\0"}, {CURLE_OK}),
};
INSTANTIATE_TEST_SUITE_P(Quit, Fault, testing::ValuesIn(chosen(kQuit)), idOf);

} // namespace
