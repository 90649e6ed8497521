// NLST and what comes over its data connection; QUIT, which a listing alone can be told how long to wait for.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& nlst()
{
    static const Rows all = {
        Row("Reply450IsAnEmptyListing", kList, {"NLST=reply:450 no files"}, {0}).leaving(""),
        Row("Reply550", kList, {"NLST=reply:550 no"}, {19}).leaving(""),
        Row("Reply500", kList, {"NLST=reply:500 unknown"}, {19}).leaving(""),
        Row("Reply226AtOnce", kList, {"NLST=reply:226 done"}, {19}).leaving(""),
        Row("Reply421", kList, {"NLST=reply:421 closing"}, {28}).basedOn(kTool).leaving(""),
        Row("Closed", kList, {"NLST=drop"}, {56}).basedOn(kTool).leaving(""),
        Row("Reset", kList, {"NLST=reset"}, {55, 56}).because(kResetWithData).basedOn(kTool).leaving(""),
        Row("Silence", kList, {"NLST=stall"}, {28}).basedOn(kDocumented).waiting(1).leaving(""),
        Row("Split", kList, {"NLST=split"}, {0}).basedOn(kTool).leaving(kNames),
    };
    return all;
}

const Rows& data()
{
    static const Rows all = {
        Row("DroppedWith426", kList, {"DATA=drop-after:7"}, {18, 56}).because(kUnannounced).leaving("a.bak\n"),
        Row("DroppedWithSuccessClaimed", kList, {"DATA=drop-after:7", "DONE=reply:226 done"}, {0, 56})
            .because(kUnannounced)
            .leaving("a.bak\n"),
        Row("ClosedEarlyWithSuccessClaimed", kList, {"DATA=claim-after:7"}, {0}).leaving("a.bak\n").basedOn(kTool),
        Row("Unannounced", kList, {"DATA=no-close-notify"}, {0, 56}).because(kUnannounced).leaving(kNames),
        Row("ResetAfterSome", kList, {"DATA=reset-after:7"}, {56}).leavingAtMost("a.bak\n"),
        Row("ClosedInPlaceOfTls", kList, {"DATA=close"}, {13, 35, 60}).because(kDataTls).leaving(""),
        Row("GarbageInPlaceOfTls", kList, {"DATA=garbage"}, {13, 35, 60}).because(kDataTls).leaving(""),
        Row("NoTls", kList, {"DATA=plain"}, {13, 35, 60}).because(kDataTls).leaving(""),
        Row("ExpiredCertificate", kList, {}, {13, 35, 60}).because(kDataTls).leaving("").on([](Scene& scene) {
            scene.server.dataCertificate = expired(scene.authority);
        }),
        Row("CertificateOfAnotherCa", kConnect, {}, {13, 35, 60}).because(kDataTls).on([](Scene& scene) {
            scene.server.dataCertificate = ofAnotherCa();
        }),
        Row("StalledThenDropped", kList, {"DATA=stall-after:7"}, {18, 56})
            .because(kUnannounced)
            .on(boundedStall)
            .leaving("a.bak\n"),
        Row("StalledInPlaceOfTls", kList, {"DATA=stall"}, {13, 35, 60}).because(kDataTls).on(boundedStall).leaving(""),
    };
    return all;
}

const Rows& done()
{
    static const Rows all = {
        Row("Reply426", kList, {"DONE=reply:426 aborted"}, {18}).leaving(kNames),
        Row("Reply421", kList, {"DONE=reply:421 closing"}, {28}).leaving(kNames),
        Row("Closed", kList, {"DONE=drop"}, {56}).leaving(kNames),
        Row("Silence", kList, {"DONE=stall"}, {28}).waiting(kAmple).leaving(kNames),
        Row("Reply250", kList, {"DONE=reply:250 done"}, {0}).leaving(kNames),
        Row("SeveralLines", kList, {"DONE=reply:226-one\\r\\n 426 two\\r\\n226 three"}, {0})
            .basedOn(kTool)
            .leaving(kNames),
    };
    return all;
}

// What happens after the result is known does not change it.
const Rows& quit()
{
    static const Rows all = {
        Row("Refused", kList, {"QUIT=reply:500 stay"}, {0}).basedOn(kTool).leaving(kNames),
        Row("Reply421", kDownload, {"QUIT=reply:421 closing"}, {0}).basedOn(kTool).leaving(kAll),
        Row("Closed", kDownload, {"QUIT=drop"}, {0}).basedOn(kTool).leaving(kAll),
        Row("Reset", kUpload, {"QUIT=reset"}, {0}).basedOn(kTool).leaving(kUploaded),
        Row("Silence", kList, {"QUIT=stall"}, {0}).waiting(kAmple).leaving(kNames),
        Row("WithoutALineEnd", kList, {"QUIT=reply:221 good\\c"}, {0}).waiting(kAmple).leaving(kNames),
        Row("AMebibyte", kDownload, {"QUIT=pad:1048576"}, {0}).basedOn(kTool).leaving(kAll),
        Row("ZeroBytes", kConnect, {"QUIT=reply:221 \\0\\0"}, {0}).basedOn(kTool),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(Nlst, Fault, testing::ValuesIn(nlst()), nameOf);
INSTANTIATE_TEST_SUITE_P(Nlst, Tool, testing::ValuesIn(replayed(nlst())), nameOf);
INSTANTIATE_TEST_SUITE_P(ListingData, Fault, testing::ValuesIn(data()), nameOf);
INSTANTIATE_TEST_SUITE_P(ListingData, Tool, testing::ValuesIn(replayed(data())), nameOf);
INSTANTIATE_TEST_SUITE_P(ListingDone, Fault, testing::ValuesIn(done()), nameOf);
INSTANTIATE_TEST_SUITE_P(ListingDone, Tool, testing::ValuesIn(replayed(done())), nameOf);
INSTANTIATE_TEST_SUITE_P(Quit, Fault, testing::ValuesIn(quit()), nameOf);
INSTANTIATE_TEST_SUITE_P(Quit, Tool, testing::ValuesIn(replayed(quit())), nameOf);

} // namespace
