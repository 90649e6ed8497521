// EPSV, PASV and the port that they name.
#include "Rows.h"

namespace {

using namespace rows;

const Rows kEpsv = {
    Row("RefusedAndPasvTaken", kDownload, {"EPSV=reply:500 unknown"}, {CURLE_OK}).leaving(kAll),
    Row("RefusedAndPasvTakenForAnUpload", kUpload, {"EPSV=reply:522 no"}, {CURLE_OK}).leaving(kUploaded),
    Row("Garbage", kList, {"EPSV=reply:229 somewhere"}, {CURLE_FTP_WEIRD_PASV_REPLY}).leaving(""),
    Row("PortAbove65535", kDownload, {"EPSV=reply:229 here (|||65536|)"}, {CURLE_FTP_WEIRD_PASV_REPLY}).leaving(""),
    Row("UnevenSeparators", kDownload, {"EPSV=reply:229 here (||!1024|)"}, {CURLE_FTP_WEIRD_PASV_REPLY}).leaving(""),
    Row("PortZeroAndPasvTaken", kDownload, {"EPSV=reply:229 here (|||0|)"}, {CURLE_OK}).leaving(kAll),
    Row("ClosedPortAndPasvTaken", kList, {"LISTEN#1=refuse"}, {CURLE_OK}).leaving(kNames),
    Row("Reply421", kList, {"EPSV=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kDownload, {"EPSV=drop"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Reset", kUpload, {"EPSV=reset"}, {CURLE_RECV_ERROR}).leaving(kNoFile),
    Row("Silence", kList, {"EPSV=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).leaving(""),
    Row("SilenceThenClosed", kRename, {"EPSV=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(kNoFile),
    Row("Split", kDownload, {"EPSV=split"}, {CURLE_OK}).leaving(kAll),
    Row("AMebibyte", kDownload, {"EPSV=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine).leaving(""),
};
INSTANTIATE_TEST_SUITE_P(Epsv, Fault, testing::ValuesIn(chosen(kEpsv)), idOf);

// After an EPSV that is refused.
constexpr const char* kPasvOnly = "EPSV=reply:500 unknown";

const Rows kPasv = {
    Row("Unparsable", kDownload, {kPasvOnly, "PASV=reply:227 somewhere"}, {CURLE_FTP_WEIRD_227_FORMAT}).leaving(""),
    Row("OctetAbove255", kDownload, {kPasvOnly, "PASV=reply:227 here (127,0,0,256,4,1)"}, {CURLE_FTP_WEIRD_227_FORMAT})
        .leaving(""),
    Row("FiveNumbers", kList, {kPasvOnly, "PASV=reply:227 here (127,0,0,1,4)"}, {CURLE_FTP_WEIRD_227_FORMAT})
        .leaving(""),
    Row("Reply500", kUpload, {kPasvOnly, "PASV=reply:500 unknown"}, {CURLE_FTP_WEIRD_PASV_REPLY}).leaving(kNoFile),
    Row("Reply450", kList, {kPasvOnly, "PASV=reply:450 not now"}, {CURLE_FTP_WEIRD_PASV_REPLY}).leaving(""),
    Row("Reply200", kDownload, {kPasvOnly, "PASV=reply:200 (127,0,0,1,4,1)"}, {CURLE_FTP_WEIRD_PASV_REPLY}).leaving(""),
    // Port 1 of the control connection's host, where nobody listens: libcurl ignores the address in the reply.
    Row("ClosedPortOfAnotherHost", kDownload, {kPasvOnly, "PASV=reply:227 here (10,0,0,1,0,1)"},
        {CURLE_COULDNT_CONNECT})
        .leaving(""),
    Row("ClosedPorts", kDownload, {"LISTEN=refuse"}, {CURLE_COULDNT_CONNECT}).leaving(""),
    Row("ClosedPortsForAnUpload", kUpload, {"LISTEN=refuse"}, {CURLE_COULDNT_CONNECT}).leaving(kNoFile),
    Row("ClosedPortsForADelete", kDelete, {"LISTEN=refuse"}, {CURLE_COULDNT_CONNECT}).leaving(kAll),
    Row("Reply421", kDownload, {kPasvOnly, "PASV=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kDownload, {kPasvOnly, "PASV=drop"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Reset", kDownload, {kPasvOnly, "PASV=reset"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Silence", kList, {kPasvOnly, "PASV=stall"}, {CURLE_OPERATION_TIMEDOUT}).waiting(1).leaving(""),
    Row("Split", kDownload, {kPasvOnly, "PASV=split"}, {CURLE_OK}).leaving(kAll),
};
INSTANTIATE_TEST_SUITE_P(Pasv, Fault, testing::ValuesIn(chosen(kPasv)), idOf);

} // namespace
