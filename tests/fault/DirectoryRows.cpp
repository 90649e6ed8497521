// CWD, MKD and TYPE.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& cwd()
{
    static const Rows all = {
        Row("Reply550", kDownload, {"CWD=reply:550 no such directory"}, {78}).leaving(""),
        Row("Reply550ForTheConnectionTest", kConnect, {"CWD=reply:550 no such directory"}, {9}),
        Row("Reply450", kList, {"CWD=reply:450 not now"}, {78}).leaving(""),
        Row("Reply550ForARename", kRename, {"CWD=reply:550 no such directory"}, {78}).leaving(kNoFile),
        Row("Reply550ForADelete", kDelete, {"CWD=reply:550 no such directory"}, {78}).leaving(kAll),
        Row("Reply421", kDownload, {"CWD=reply:421 closing"}, {28}).basedOn(kTool).leaving(""),
        Row("Closed", kDelete, {"CWD=drop"}, {56}).basedOn(kTool).leaving(kAll),
        Row("Reset", kList, {"CWD=reset"}, {56}).basedOn(kTool).leaving(""),
        Row("Silence", kList, {"CWD=stall"}, {28}).basedOn(kDocumented).waiting(1).leaving(""),
        Row("SilenceThenClosed", kDownload, {"CWD=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(""),
    };
    return all;
}

const Rows& mkd()
{
    static const Rows all = {
        Row("Reply550", kUpload, {"MKD=reply:550 no"}, {78}).at("/new/up.bak").leaving(kNoFile),
        Row("Reply550ForWhatExistsMeanwhile", kUpload, {"CWD#1=reply:550 no such", "MKD=reply:550 exists"}, {0})
            .basedOn(kDocumented)
            .leaving(kUploaded),
        Row("ClaimedOnly", kUpload, {"MKD=reply:257 made"}, {78}).basedOn(kTool).at("/new/up.bak").leaving(kNoFile),
        Row("Reply421", kUpload, {"MKD=reply:421 closing"}, {28}).basedOn(kTool).at("/new/up.bak").leaving(kNoFile),
        Row("Closed", kUpload, {"MKD=drop"}, {56}).basedOn(kTool).at("/new/up.bak").leaving(kNoFile),
        Row("Reset", kUpload, {"MKD=reset"}, {56}).basedOn(kTool).at("/new/up.bak").leaving(kNoFile),
        Row("SilenceThenClosed", kUpload, {"MKD=stall"}, {56})
            .basedOn(kTool)
            .at("/new/up.bak")
            .on(boundedStall)
            .leaving(kNoFile),
        Row("Split", kUpload, {"MKD=split"}, {0}).basedOn(kTool).at("/new/up.bak").leaving(kUploaded),
    };
    return all;
}

const Rows& type()
{
    static const Rows all = {
        Row("RefusedForAList", kList, {"TYPE=reply:500 unknown"}, {17}).leaving(""),
        Row("RefusedForADownload", kDownload, {"TYPE=reply:504 no"}, {17}).leaving(""),
        Row("RefusedForAnUpload", kUpload, {"TYPE=reply:504 no"}, {17}).leaving(kNoFile),
        Row("Reply421", kDownload, {"TYPE=reply:421 closing"}, {28}).basedOn(kTool).leaving(""),
        Row("Closed", kDownload, {"TYPE=drop"}, {56}).basedOn(kTool).leaving(""),
        Row("Reset", kUpload, {"TYPE=reset"}, {56}).basedOn(kTool).leaving(kNoFile),
        Row("Silence", kList, {"TYPE=stall"}, {28}).basedOn(kDocumented).waiting(1).leaving(""),
        Row("SeveralLines", kDownload, {"TYPE=reply:200-one\\r\\n 500 two\\r\\n200 three"}, {0})
            .basedOn(kTool)
            .leaving(kAll),
        Row("ZeroBytes", kDownload, {"TYPE=reply:200 \\0\\0"}, {0, 8})
            .because("Later releases refuse zero bytes.")
            .basedOn(kTool)
            .leavingAfter(0, kAll),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(Cwd, Fault, testing::ValuesIn(cwd()), nameOf);
INSTANTIATE_TEST_SUITE_P(Cwd, Tool, testing::ValuesIn(replayed(cwd())), nameOf);
INSTANTIATE_TEST_SUITE_P(Mkd, Fault, testing::ValuesIn(mkd()), nameOf);
INSTANTIATE_TEST_SUITE_P(Mkd, Tool, testing::ValuesIn(replayed(mkd())), nameOf);
INSTANTIATE_TEST_SUITE_P(Type, Fault, testing::ValuesIn(type()), nameOf);
INSTANTIATE_TEST_SUITE_P(Type, Tool, testing::ValuesIn(replayed(type())), nameOf);

} // namespace
