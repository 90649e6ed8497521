// SIZE: before the download, where it makes the size check, and within the download.
#include "Rows.h"

namespace {

using namespace rows;

// The first session asks for the size, the second downloads. -1: the check has refused.
constexpr const char* kUnknown = "7.88.1 takes it for a size of 0; later releases know that there is none.";

const Rows kCheck = {
    Row("MissingFile", kChecked, {"SIZE=reply:550 no such file"}, {CURLE_REMOTE_FILE_NOT_FOUND}).leaving(""),
    Row("MissingForTheCheckOnly", kChecked, {"1/SIZE=reply:550 no such file"}, {CURLE_OK}).leaving(kAll),
    Row("Reply500", kChecked, {"1/SIZE=reply:500 unknown"}, {kRefused}).leaving(kNoFile),
    Row("Reply530", kChecked, {"1/SIZE=reply:530 no"}, {kRefused}).leaving(kNoFile),
    Row("NoNumber", kChecked, {"1/SIZE=reply:213 abc"}, {CURLE_OK})
        .in814(kRefused, kUnknown)
        .leavingAfter(CURLE_OK, kAll),
    Row("Empty", kChecked, {"1/SIZE=reply:213 "}, {CURLE_OK}).in814(kRefused, kUnknown).leavingAfter(CURLE_OK, kAll),
    Row("TwentyFourDigits", kChecked, {"1/SIZE=reply:213 123456789012345678901234"}, {CURLE_OK})
        .in814(kRefused, kUnknown)
        .leavingAfter(CURLE_OK, kAll),
    Row("Negative", kChecked, {"1/SIZE=reply:213 -5"}, {CURLE_OK}).leaving(kAll),
    Row("AboveTheLimit", kChecked, {"1/SIZE=reply:213 53687091200"}, {kRefused}).leaving(kNoFile),
    Row("BelowTheLimit", kChecked, {"1/SIZE=reply:213 53687091199"}, {CURLE_OK}).leaving(kAll),
    Row("Reply421", kChecked, {"1/SIZE=reply:421 closing"}, {kRefused}).leaving(kNoFile),
    Row("Closed", kChecked, {"1/SIZE=drop"}, {kRefused}).leaving(kNoFile),
    Row("GreetingClosed", kChecked, {"1/GREETING=drop"}, {kRefused}).leaving(kNoFile),
    Row("LoginRefused", kChecked, {"1/PASS=reply:530 no"}, {kRefused}).leaving(kNoFile),
    Row("DirectoryRefused", kChecked, {"1/CWD=reply:550 no"}, {kRefused}).leaving(kNoFile),
};
INSTANTIATE_TEST_SUITE_P(SizeCheck, Fault, testing::ValuesIn(chosen(kCheck)), idOf);

const Rows kWithin = {
    Row("Reply550", kDownload, {"SIZE=reply:550 no such file"}, {CURLE_REMOTE_FILE_NOT_FOUND}).leaving(""),
    Row("Reply500", kDownload, {"SIZE=reply:500 unknown"}, {CURLE_OK}).leaving(kAll),
    // libcurl closes the data connection at the announced end; a server may or may not take that for an abort.
    Row("TooSmall", kDownload, {"SIZE=reply:213 5000", "DONE=reply:226 done"}, {CURLE_OK}).leaving(5000),
    Row("TooLarge", kDownload, {"SIZE=reply:213 200000"}, {CURLE_PARTIAL_FILE}).leaving(kAll),
    Row("Reply421", kDownload, {"SIZE=reply:421 closing"}, {CURLE_OPERATION_TIMEDOUT}).leaving(""),
    Row("Closed", kDownload, {"SIZE=drop"}, {CURLE_RECV_ERROR}).leaving(""),
    Row("Reset", kDownload, {"SIZE=reset"}, {CURLE_SEND_ERROR, CURLE_RECV_ERROR}).racing(kResetWithData).leaving(""),
    Row("SilenceThenClosed", kDownload, {"SIZE=stall"}, {CURLE_RECV_ERROR}).on(boundedStall).leaving(""),
    Row("Split", kDownload, {"SIZE=split"}, {CURLE_OK}).leaving(kAll),
    Row("SeveralLines", kDownload, {"SIZE=reply:213-5000\\r\\n213 100000"}, {CURLE_OK}).leaving(kAll),
    Row("AMebibyte", kDownload, {"SIZE=pad:1048576"}, {CURLE_RECV_ERROR}).in814(kTooLarge, kLongLine).leaving(""),
};
INSTANTIATE_TEST_SUITE_P(Size, Fault, testing::ValuesIn(chosen(kWithin)), idOf);

} // namespace
