// RETR, what comes over its data connection, and the reply that ends it.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& retr()
{
    static const Rows all = {
        Row("Reply550", kDownload, {"RETR=reply:550 no such file"}, {78}).leaving(""),
        Row("Reply450", kDownload, {"RETR=reply:450 not now"}, {19}).leaving(""),
        Row("Reply500", kDownload, {"RETR=reply:500 unknown"}, {19}).leaving(""),
        Row("Reply226AtOnce", kDownload, {"RETR=reply:226 done"}, {19}).leaving(""),
        Row("Reply421", kDownload, {"RETR=reply:421 closing"}, {28}).leaving(""),
        Row("Closed", kDownload, {"RETR=drop"}, {56}).leaving(""),
        Row("Reset", kDownload, {"RETR=reset"}, {55, 56}).because(kResetWithData).basedOn(kTool).leaving(""),
        Row("SilenceThenClosed", kDownload, {"RETR=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(""),
        Row("Split", kDownload, {"RETR=split"}, {0}).basedOn(kTool).leaving(kAll),
    };
    return all;
}

const Rows& data()
{
    static const Rows all = {
        Row("DroppedAfterNothing", kDownload, {"DATA=drop-after:0"}, {18, 56}).because(kUnannounced).leaving(""),
        Row("DroppedAfterSome", kDownload, {"DATA=drop-after:50000"}, {18, 56}).because(kUnannounced).leaving(50000),
        Row("DroppedBeforeTheLastByte", kDownload, {"DATA=drop-after:99999"}, {18, 56})
            .because(kUnannounced)
            .leaving(99999),
        Row("DroppedWithSuccessClaimed", kDownload, {"DATA=drop-after:50000", "DONE=reply:226 done"}, {18, 56})
            .because(kUnannounced)
            .leaving(50000),
        Row("ClosedEarlyWithSuccessClaimed", kDownload, {"DATA=claim-after:50000"}, {18}).leaving(50000),
        Row("NothingWithSuccessClaimed", kDownload, {"DATA=claim-after:0"}, {18}).leaving(""),
        Row("ClosedEarlyWithSizeUnknown", kDownload, {"SIZE=reply:500 unknown", "DATA=claim-after:50000"}, {0})
            .leaving(50000),
        Row("DroppedWithSizeUnknown", kDownload,
            {"SIZE=reply:500 unknown", "DATA=drop-after:50000", "DONE=reply:226 done"}, {0, 56})
            .because(kUnannounced)
            .leaving(50000),
        Row("ResetAfterSome", kDownload, {"DATA=reset-after:50000"}, {56}).leavingAtMost(50000),
        Row("StalledThenDropped", kDownload, {"DATA=stall-after:50000"}, {18, 56})
            .because(kUnannounced)
            .on(boundedStall)
            .leaving(50000),
        Row("Slow", kDownload, {"DATA=slow:200000"}, {0}).basedOn(kTool).leaving(kAll),
        Row("ClosedInPlaceOfTls", kDownload, {"DATA=close"}, {13, 35, 60}).because(kDataTls).leaving(""),
        Row("GarbageInPlaceOfTls", kDownload, {"DATA=garbage"}, {13, 35, 60}).because(kDataTls).leaving(""),
        Row("NoTls", kDownload, {"DATA=plain"}, {13, 35, 60}).because(kDataTls).leaving(""),
        Row("ExpiredCertificate", kDownload, {}, {13, 35, 60}).because(kDataTls).leaving("").on([](Scene& scene) {
            scene.server.dataCertificate = expired(scene.authority);
        }),
        Row("NotYetValidCertificate", kDownload, {}, {13, 35, 60}).because(kDataTls).leaving("").on([](Scene& scene) {
            scene.server.dataCertificate = notYetValid(scene.authority);
        }),
        Row("SelfSignedCertificate", kDownload, {}, {13, 35, 60}).because(kDataTls).leaving("").on([](Scene& scene) {
            scene.server.dataCertificate = testserver::makeSelfSigned();
        }),
    };
    return all;
}

// All the data has come: the file is whole, whatever the server says of it.
const Rows& done()
{
    static const Rows all = {
        Row("Reply426", kDownload, {"DONE=reply:426 aborted"}, {18}).leaving(kAll),
        Row("Reply451", kDownload, {"DONE=reply:451 broken"}, {18}).leaving(kAll),
        Row("Reply550", kDownload, {"DONE=reply:550 no"}, {18}).leaving(kAll),
        Row("Reply200", kDownload, {"DONE=reply:200 done"}, {18}).leaving(kAll),
        Row("Reply552", kDownload, {"DONE=reply:552 full"}, {70}).leaving(kAll),
        Row("Reply250", kDownload, {"DONE=reply:250 done"}, {0}).leaving(kAll),
        Row("Reply421", kDownload, {"DONE=reply:421 closing"}, {28}).leaving(kAll),
        Row("Closed", kDownload, {"DONE=drop"}, {56}).leaving(kAll),
        Row("Reset", kDownload, {"DONE=reset"}, {56}).leaving(kAll),
        Row("SilenceThenClosed", kDownload, {"DONE=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(kAll),
        Row("HalfAndClosed", kDownload, {"DONE=last:226 do\\c"}, {56}).basedOn(kTool).leaving(kAll),
        Row("Split", kDownload, {"DONE=split"}, {0}).basedOn(kTool).leaving(kAll),
        Row("AMebibyte", kDownload, {"DONE=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool).leaving(kAll),
        Row("EndlessLines", kDownload, {"DONE=endless:226-and another thing"}, {56, 28})
            .because(kEndless)
            .basedOn(kTool)
            .leaving(kAll),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(Retr, Fault, testing::ValuesIn(retr()), nameOf);
INSTANTIATE_TEST_SUITE_P(Retr, Tool, testing::ValuesIn(replayed(retr())), nameOf);
INSTANTIATE_TEST_SUITE_P(DownloadData, Fault, testing::ValuesIn(data()), nameOf);
INSTANTIATE_TEST_SUITE_P(DownloadData, Tool, testing::ValuesIn(replayed(data())), nameOf);
INSTANTIATE_TEST_SUITE_P(DownloadDone, Fault, testing::ValuesIn(done()), nameOf);
INSTANTIATE_TEST_SUITE_P(DownloadDone, Tool, testing::ValuesIn(replayed(done())), nameOf);

} // namespace
