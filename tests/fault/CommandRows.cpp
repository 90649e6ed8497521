// The two commands after the visit of the directory, and the visit itself.
#include "harness/Rows.h"

namespace {

using namespace rows;

const Rows& renameRows()
{
    static const Rows all = {
        Row("Reply500", kRename, {"rename=reply:500 unknown"}, {21}).leaving(kNoFile),
        Row("Reply550", kRename, {"rename=reply:550 no such file"}, {21}).leaving(kNoFile),
        Row("Reply450", kRename, {"rename=reply:450 busy"}, {21}).leaving(kNoFile),
        Row("Reply200WithoutEffect", kRename, {"rename=reply:200 ok"}, {0}).leaving(kNoFile),
        Row("Reply150WithoutEffect", kRename, {"rename=reply:150 wait"}, {0}).leaving(kNoFile),
        Row("Reply421", kRename, {"rename=reply:421 closing"}, {28}).leaving(kNoFile),
        Row("Closed", kRename, {"rename=drop"}, {56}).leaving(kNoFile),
        Row("Reset", kRename, {"rename=reset"}, {56}).basedOn(kTool).leaving(kNoFile),
        Row("SilenceThenClosed", kRename, {"rename=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(kNoFile),
        Row("HalfAndClosed", kRename, {"rename=last:250 rena\\c"}, {56}).basedOn(kTool).leaving(kNoFile),
        Row("Split", kRename, {"rename=split"}, {0}).basedOn(kTool).leaving(kAll),
        Row("SeveralLines", kRename, {"rename=reply:550-one\\r\\n550 two"}, {21}).basedOn(kTool).leaving(kNoFile),
        Row("AMebibyte", kRename, {"rename=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool).leaving(kAll),
    };
    return all;
}

const Rows& rm()
{
    static const Rows all = {
        Row("Reply500", kDelete, {"rm=reply:500 unknown"}, {21}).leaving(kAll),
        Row("Reply550", kDelete, {"rm=reply:550 no such file"}, {21}).leaving(kAll),
        Row("Reply226WithoutEffect", kDelete, {"rm=reply:226 ok"}, {0}).leaving(kAll),
        Row("Reply350WithoutEffect", kDelete, {"rm=reply:350 more"}, {0}).leaving(kAll),
        Row("Reply421", kDelete, {"rm=reply:421 closing"}, {28}).leaving(kAll),
        Row("Closed", kDelete, {"rm=drop"}, {56}).leaving(kAll),
        Row("Reset", kDelete, {"rm=reset"}, {56}).basedOn(kTool).leaving(kAll),
        Row("SilenceThenClosed", kDelete, {"rm=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(kAll),
        Row("Split", kDelete, {"rm=split"}, {0}).basedOn(kTool).leaving(kNoFile),
        Row("ZeroBytes", kDelete, {"rm=reply:550 \\0\\0"}, {21, 8})
            .because("Later releases refuse zero bytes.")
            .basedOn(kTool)
            .leaving(kAll),
    };
    return all;
}

// A visit that fails leaves the command unsaid.
const Rows& visit()
{
    static const Rows all = {
        Row("ListRefused", kRename, {"LIST=reply:550 no"}, {19}).basedOn(kTool).leaving(kNoFile),
        Row("ListRefusedForADelete", kDelete, {"LIST=reply:500 unknown"}, {19}).basedOn(kTool).leaving(kAll),
        Row("ListReply450", kDelete, {"LIST=reply:450 no files"}, {0}).basedOn(kTool).leaving(kNoFile),
        Row("DataDropped", kRename, {"DATA=drop-after:10"}, {18, 56}).because(kUnannounced).leaving(kNoFile),
        Row("DataReset", kDelete, {"DATA=reset-after:10"}, {56}).leaving(kAll),
        Row("DataWithoutTls", kDelete, {"DATA=plain"}, {13, 35, 60}).because(kDataTls).leaving(kAll),
        Row("Done426", kDelete, {"DONE=reply:426 aborted"}, {18}).basedOn(kTool).leaving(kAll),
        Row("Done421", kRename, {"DONE=reply:421 closing"}, {28}).basedOn(kTool).leaving(kNoFile),
        Row("DoneClosed", kRename, {"DONE=drop"}, {56}).basedOn(kTool).leaving(kNoFile),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(RenameCommand, Fault, testing::ValuesIn(renameRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(RenameCommand, Tool, testing::ValuesIn(replayed(renameRows())), nameOf);
INSTANTIATE_TEST_SUITE_P(RmCommand, Fault, testing::ValuesIn(rm()), nameOf);
INSTANTIATE_TEST_SUITE_P(RmCommand, Tool, testing::ValuesIn(replayed(rm())), nameOf);
INSTANTIATE_TEST_SUITE_P(Visit, Fault, testing::ValuesIn(visit()), nameOf);
INSTANTIATE_TEST_SUITE_P(Visit, Tool, testing::ValuesIn(replayed(visit())), nameOf);

} // namespace
