// STOR, its data connection, and the reply that ends it.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kStor = {
    Row("Reply450", kUpload, {"STOR=reply:450 not now"}, {CURLE_UPLOAD_FAILED}).leaving(kNoFile),
    Row("Reply452", kUpload, {"STOR=reply:452 full"}, {CURLE_UPLOAD_FAILED}).leaving(kNoFile),
    Row("Reply550", kUpload, {"STOR=reply:550 no"}, {CURLE_UPLOAD_FAILED}).leaving(kNoFile),
    Row("Reply552", kUpload, {"STOR=reply:552 full"}, {CURLE_UPLOAD_FAILED}).leaving(kNoFile),
    Row("Reply553", kUpload, {"STOR=reply:553 no such name"}, {CURLE_UPLOAD_FAILED}).leaving(kNoFile),
    Row("Reply421", kUpload, {"STOR=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kNoFile),
    Row("Closed", kUpload, {"STOR=drop"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Reset", kUpload, {"STOR=reset"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("SilenceThenClosed", kUpload, {"STOR=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(kNoFile),
    Row("Split", kUpload, {"STOR=split"}, {CURLE_OK}).leaving(kUploaded),
};
INSTANTIATE_TEST_SUITE_P(Stor, Fault, testing::ValuesIn(chosen(kStor)), idOf);

const Rows kData = {
    Row("Dropped", kUpload, {"DATA=drop-after:50000"}, {CURLE_SEND_ERROR}).leaving(50000),
    Row("DroppedWithSuccessClaimed", kUpload, {"DATA=drop-after:50000", "DONE=reply:226 done"}, {CURLE_SEND_ERROR})
        .leaving(50000),
    Row("ClosedEarlyWithSuccessClaimed", kUpload, {"DATA=claim-after:50000"}, {CURLE_SEND_ERROR}).leaving(50000),
    Row("Reset", kUpload, {"DATA=reset-after:50000"}, {CURLE_SEND_ERROR}).leaving(50000),
    Row("StalledThenDropped", kUpload, {"DATA=stall-after:50000"}, {CURLE_SEND_ERROR}).on(boundedStall).leaving(50000),
    Row("ClosedInPlaceOfTls", kUpload, {"DATA=close"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .on(implicitTls),
    Row("GarbageInPlaceOfTls", kUpload, {"DATA=garbage"},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .on(implicitTls),
    Row("CertificateOfAnotherCa", kUpload, {},
        {CURLE_FTP_WEIRD_PASV_REPLY, CURLE_SSL_CONNECT_ERROR, CURLE_PEER_FAILED_VERIFICATION})
        .racing(kDataTls)
        .on([](Scene& scene) {
            implicitTls(scene);
            scene.server.dataCertificate = ofAnotherCa();
        }),
    Row("DroppedOverTls", kUpload, {"DATA=drop-after:50000"}, {CURLE_SEND_ERROR, CURLE_RECV_ERROR})
        .because("libcurl meets the reset while it sends or while it reads what TLS has to say.")
        .on(implicitTls)
        .leaving(50000),
};
INSTANTIATE_TEST_SUITE_P(UploadData, Fault, testing::ValuesIn(chosen(kData)), idOf);

const Rows kDone = {
    Row("Reply552", kUpload, {"DONE=reply:552 full"}, {CURLE_REMOTE_DISK_FULL}).leaving(kUploaded),
    Row("Reply452", kUpload, {"DONE=reply:452 full"}, {CURLE_PARTIAL_FILE}).leaving(kUploaded),
    Row("Reply426", kUpload, {"DONE=reply:426 aborted"}, {CURLE_PARTIAL_FILE}).leaving(kUploaded),
    Row("Reply451", kUpload, {"DONE=reply:451 broken"}, {CURLE_PARTIAL_FILE}).leaving(kUploaded),
    Row("Reply553", kUpload, {"DONE=reply:553 no"}, {CURLE_PARTIAL_FILE}).leaving(kUploaded),
    Row("Reply200", kUpload, {"DONE=reply:200 done"}, {CURLE_PARTIAL_FILE}).leaving(kUploaded),
    Row("Reply421", kUpload, {"DONE=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(kUploaded),
    Row("Closed", kUpload, {"DONE=drop"}, {CURLE_RECV_ERROR}).leaving(kUploaded),
    Row("Reset", kUpload, {"DONE=reset"}, {CURLE_RECV_ERROR}).leaving(kUploaded),
    Row("SilenceThenClosed", kUpload, {"DONE=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(kUploaded),
    Row("Split", kUpload, {"DONE=split"}, {CURLE_OK}).leaving(kUploaded),
    Row("SeveralLines", kUpload, {"DONE=reply:226-one\\r\\n 552 two\\r\\n226 three"}, {CURLE_OK}).leaving(kUploaded),
};
INSTANTIATE_TEST_SUITE_P(UploadDone, Fault, testing::ValuesIn(chosen(kDone)), idOf);

// Why the size is given to libcurl, though not to the server.
const Rows kSource = {
    Row("HasMoreBytesThanItsSizeSays", kUpload, {}, {CURLE_PARTIAL_FILE})
        .in814(CURLE_OK, "7.88.1 sends them all the same; 8.14.1 asks for none where the size is 0.")
        .leavingAfter(CURLE_OK, "")
        .beyondTheTool()
        .on([](Scene& scene) { scene.request.localPath = "/proc/version"; }),
};
INSTANTIATE_TEST_SUITE_P(UploadSource, Fault, testing::ValuesIn(chosen(kSource)), idOf);

} // namespace
