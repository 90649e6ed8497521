// STOR, its data connection, and the reply that ends it.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& stor()
{
    static const Rows all = {
        Row("Reply450", kUpload, {"STOR=reply:450 not now"}, {25}).leaving(kNoFile),
        Row("Reply452", kUpload, {"STOR=reply:452 full"}, {25}).leaving(kNoFile),
        Row("Reply550", kUpload, {"STOR=reply:550 no"}, {25}).leaving(kNoFile),
        Row("Reply552", kUpload, {"STOR=reply:552 full"}, {25}).leaving(kNoFile),
        Row("Reply553", kUpload, {"STOR=reply:553 no such name"}, {25}).leaving(kNoFile),
        Row("Reply421", kUpload, {"STOR=reply:421 closing"}, {28}).leaving(kNoFile),
        Row("Closed", kUpload, {"STOR=drop"}, {56}).leaving(kNoFile),
        Row("Reset", kUpload, {"STOR=reset"}, {56}).basedOn(kTool).leaving(kNoFile),
        Row("SilenceThenClosed", kUpload, {"STOR=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(kNoFile),
        Row("Split", kUpload, {"STOR=split"}, {0}).basedOn(kTool).leaving(kUploaded),
    };
    return all;
}

const Rows& data()
{
    static const Rows all = {
        Row("Dropped", kUpload, {"DATA=drop-after:50000"}, {55}).leaving(50000),
        Row("DroppedWithSuccessClaimed", kUpload, {"DATA=drop-after:50000", "DONE=reply:226 done"}, {55})
            .leaving(50000),
        Row("ClosedEarlyWithSuccessClaimed", kUpload, {"DATA=claim-after:50000"}, {55}).leaving(50000),
        Row("Reset", kUpload, {"DATA=reset-after:50000"}, {55}).leaving(50000),
        Row("StalledThenDropped", kUpload, {"DATA=stall-after:50000"}, {55}).on(boundedStall).leaving(50000),
        Row("ClosedInPlaceOfTls", kUpload, {"DATA=close"}, {13, 35, 60}).because(kDataTls).on(implicitTls),
        Row("GarbageInPlaceOfTls", kUpload, {"DATA=garbage"}, {13, 35, 60}).because(kDataTls).on(implicitTls),
        Row("CertificateOfAnotherCa", kUpload, {}, {13, 35, 60}).because(kDataTls).on([](Scene& scene) {
            implicitTls(scene);
            scene.server.dataCertificate = ofAnotherCa();
        }),
        Row("DroppedOverTls", kUpload, {"DATA=drop-after:50000"}, {55, 56})
            .because("libcurl meets the reset while it sends or while it reads what TLS has to say.")
            .on(implicitTls)
            .leaving(50000),
    };
    return all;
}

const Rows& done()
{
    static const Rows all = {
        Row("Reply552", kUpload, {"DONE=reply:552 full"}, {70}).leaving(kUploaded),
        Row("Reply452", kUpload, {"DONE=reply:452 full"}, {18}).leaving(kUploaded),
        Row("Reply426", kUpload, {"DONE=reply:426 aborted"}, {18}).leaving(kUploaded),
        Row("Reply451", kUpload, {"DONE=reply:451 broken"}, {18}).leaving(kUploaded),
        Row("Reply553", kUpload, {"DONE=reply:553 no"}, {18}).leaving(kUploaded),
        Row("Reply200", kUpload, {"DONE=reply:200 done"}, {18}).leaving(kUploaded),
        Row("Reply421", kUpload, {"DONE=reply:421 closing"}, {28}).leaving(kUploaded),
        Row("Closed", kUpload, {"DONE=drop"}, {56}).leaving(kUploaded),
        Row("Reset", kUpload, {"DONE=reset"}, {56}).leaving(kUploaded),
        Row("SilenceThenClosed", kUpload, {"DONE=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(kUploaded),
        Row("Split", kUpload, {"DONE=split"}, {0}).basedOn(kTool).leaving(kUploaded),
        Row("SeveralLines", kUpload, {"DONE=reply:226-one\\r\\n 552 two\\r\\n226 three"}, {0})
            .basedOn(kTool)
            .leaving(kUploaded),
    };
    return all;
}

// What the size that is announced to libcurl, not to the server, is good for.
const Rows& source()
{
    static const Rows all = {
        Row("HasMoreBytesThanItsSizeSays", kUpload, {}, {18}).beyondTheTool().on([](Scene& scene) {
            scene.request.localPath = "/proc/version";
        }),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(UploadSource, Fault, testing::ValuesIn(source()), nameOf);
INSTANTIATE_TEST_SUITE_P(Stor, Fault, testing::ValuesIn(stor()), nameOf);
INSTANTIATE_TEST_SUITE_P(Stor, Tool, testing::ValuesIn(replayed(stor())), nameOf);
INSTANTIATE_TEST_SUITE_P(UploadData, Fault, testing::ValuesIn(data()), nameOf);
INSTANTIATE_TEST_SUITE_P(UploadData, Tool, testing::ValuesIn(replayed(data())), nameOf);
INSTANTIATE_TEST_SUITE_P(UploadDone, Fault, testing::ValuesIn(done()), nameOf);
INSTANTIATE_TEST_SUITE_P(UploadDone, Tool, testing::ValuesIn(replayed(done())), nameOf);

} // namespace
