// EPSV, PASV and the port that they name.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& epsv()
{
    static const Rows all = {
        Row("RefusedAndPasvTaken", kDownload, {"EPSV=reply:500 unknown"}, {0}).leaving(kAll),
        Row("RefusedAndPasvTakenForAnUpload", kUpload, {"EPSV=reply:522 no"}, {0}).leaving(kUploaded),
        Row("Garbage", kList, {"EPSV=reply:229 somewhere"}, {13}).leaving(""),
        Row("PortAbove65535", kDownload, {"EPSV=reply:229 here (|||65536|)"}, {13}).leaving(""),
        Row("UnevenSeparators", kDownload, {"EPSV=reply:229 here (||!1024|)"}, {13}).leaving(""),
        Row("PortZeroAndPasvTaken", kDownload, {"EPSV=reply:229 here (|||0|)"}, {0}).leaving(kAll),
        Row("ClosedPortAndPasvTaken", kList, {"LISTEN#1=refuse"}, {0}).leaving(kNames),
        Row("Reply421", kList, {"EPSV=reply:421 closing"}, {28}).leaving(""),
        Row("Closed", kDownload, {"EPSV=drop"}, {56}).leaving(""),
        Row("Reset", kUpload, {"EPSV=reset"}, {56}).basedOn(kTool).leaving(kNoFile),
        Row("Silence", kList, {"EPSV=stall"}, {28}).waiting(1).leaving(""),
        Row("SilenceThenClosed", kRename, {"EPSV=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(kNoFile),
        Row("Split", kDownload, {"EPSV=split"}, {0}).basedOn(kTool).leaving(kAll),
        Row("AMebibyte", kDownload, {"EPSV=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool).leaving(""),
    };
    return all;
}

// After an EPSV that is refused.
const Rows& pasv()
{
    const std::string refused = "EPSV=reply:500 unknown";
    static const Rows all = {
        Row("Unparsable", kDownload, {refused, "PASV=reply:227 somewhere"}, {14}).leaving(""),
        Row("OctetAbove255", kDownload, {refused, "PASV=reply:227 here (127,0,0,256,4,1)"}, {14}).leaving(""),
        Row("FiveNumbers", kList, {refused, "PASV=reply:227 here (127,0,0,1,4)"}, {14}).leaving(""),
        Row("Reply500", kUpload, {refused, "PASV=reply:500 unknown"}, {13}).leaving(kNoFile),
        Row("Reply450", kList, {refused, "PASV=reply:450 not now"}, {13}).leaving(""),
        Row("Reply200", kDownload, {refused, "PASV=reply:200 (127,0,0,1,4,1)"}, {13}).leaving(""),
        // Port 1 of the control connection's host, where nobody listens: the address that is named does not count.
        Row("ClosedPortOfAnotherHost", kDownload, {refused, "PASV=reply:227 here (10,0,0,1,0,1)"}, {7}).leaving(""),
        Row("ClosedPorts", kDownload, {"LISTEN=refuse"}, {7}).leaving(""),
        Row("ClosedPortsForAnUpload", kUpload, {"LISTEN=refuse"}, {7}).leaving(kNoFile),
        Row("ClosedPortsForADelete", kDelete, {"LISTEN=refuse"}, {7}).leaving(kAll),
        Row("Reply421", kDownload, {refused, "PASV=reply:421 closing"}, {28}).leaving(""),
        Row("Closed", kDownload, {refused, "PASV=drop"}, {56}).leaving(""),
        Row("Reset", kDownload, {refused, "PASV=reset"}, {56}).basedOn(kTool).leaving(""),
        Row("Silence", kList, {refused, "PASV=stall"}, {28}).waiting(1).leaving(""),
        Row("Split", kDownload, {refused, "PASV=split"}, {0}).basedOn(kTool).leaving(kAll),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(Epsv, Fault, testing::ValuesIn(epsv()), nameOf);
INSTANTIATE_TEST_SUITE_P(Epsv, Tool, testing::ValuesIn(replayed(epsv())), nameOf);
INSTANTIATE_TEST_SUITE_P(Pasv, Fault, testing::ValuesIn(pasv()), nameOf);
INSTANTIATE_TEST_SUITE_P(Pasv, Tool, testing::ValuesIn(replayed(pasv())), nameOf);

} // namespace
