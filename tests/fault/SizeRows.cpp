// SIZE: before the download, where it makes the size check, and within the download.
#include "harness/Rows.h"

namespace {

using namespace rows;

// The first session asks for the size, the second downloads. -1: the check has refused.
const Rows& check()
{
    const auto* const unknown = "7.88.1 takes it for a size of 0; later releases know that there is none.";
    static const Rows all = {
        Row("MissingFile", kChecked, {"SIZE=reply:550 no such file"}, {78}).leaving(""),
        Row("MissingForTheCheckOnly", kChecked, {"1/SIZE=reply:550 no such file"}, {0}).leaving(kAll),
        Row("Reply500", kChecked, {"1/SIZE=reply:500 unknown"}, {-1}).leaving(kNoFile),
        Row("Reply530", kChecked, {"1/SIZE=reply:530 no"}, {-1}).leaving(kNoFile),
        Row("NoNumber", kChecked, {"1/SIZE=reply:213 abc"}, {0, -1}).because(unknown).leavingAfter(0, kAll),
        Row("Empty", kChecked, {"1/SIZE=reply:213 "}, {0, -1}).because(unknown).leavingAfter(0, kAll),
        Row("TwentyFourDigits", kChecked, {"1/SIZE=reply:213 123456789012345678901234"}, {0, -1})
            .because(unknown)
            .leavingAfter(0, kAll),
        Row("Negative", kChecked, {"1/SIZE=reply:213 -5"}, {0}).leaving(kAll),
        Row("AboveTheLimit", kChecked, {"1/SIZE=reply:213 53687091200"}, {-1}).basedOn(kDocumented).leaving(kNoFile),
        Row("BelowTheLimit", kChecked, {"1/SIZE=reply:213 53687091199"}, {0}).basedOn(kDocumented).leaving(kAll),
        Row("Reply421", kChecked, {"1/SIZE=reply:421 closing"}, {-1}).basedOn(kDocumented).leaving(kNoFile),
        Row("Closed", kChecked, {"1/SIZE=drop"}, {-1}).basedOn(kDocumented).leaving(kNoFile),
        Row("GreetingClosed", kChecked, {"1/GREETING=drop"}, {-1}).leaving(kNoFile),
        Row("LoginRefused", kChecked, {"1/PASS=reply:530 no"}, {-1}).leaving(kNoFile),
        Row("DirectoryRefused", kChecked, {"1/CWD=reply:550 no"}, {-1}).leaving(kNoFile),
    };
    return all;
}

const Rows& within()
{
    static const Rows all = {
        Row("Reply550", kDownload, {"SIZE=reply:550 no such file"}, {78}).leaving(""),
        Row("Reply500", kDownload, {"SIZE=reply:500 unknown"}, {0}).leaving(kAll),
        // libcurl closes the data connection at the announced end; a server may or may not take that for an abort.
        Row("TooSmall", kDownload, {"SIZE=reply:213 5000", "DONE=reply:226 done"}, {0}).leaving(5000),
        Row("TooLarge", kDownload, {"SIZE=reply:213 200000"}, {18}).leaving(kAll),
        Row("Reply421", kDownload, {"SIZE=reply:421 closing"}, {28}).basedOn(kTool).leaving(""),
        Row("Closed", kDownload, {"SIZE=drop"}, {56}).basedOn(kTool).leaving(""),
        Row("Reset", kDownload, {"SIZE=reset"}, {55, 56}).because(kResetWithData).basedOn(kTool).leaving(""),
        Row("SilenceThenClosed", kDownload, {"SIZE=stall"}, {56}).basedOn(kTool).on(boundedStall).leaving(""),
        Row("Split", kDownload, {"SIZE=split"}, {0}).basedOn(kTool).leaving(kAll),
        Row("SeveralLines", kDownload, {"SIZE=reply:213-5000\\r\\n213 100000"}, {0}).basedOn(kTool).leaving(kAll),
        Row("AMebibyte", kDownload, {"SIZE=pad:1048576"}, {56, 100}).because(kLongLine).basedOn(kTool).leaving(""),
    };
    return all;
}

INSTANTIATE_TEST_SUITE_P(SizeCheck, Fault, testing::ValuesIn(check()), nameOf);
INSTANTIATE_TEST_SUITE_P(Size, Fault, testing::ValuesIn(within()), nameOf);
INSTANTIATE_TEST_SUITE_P(Size, Tool, testing::ValuesIn(replayed(within())), nameOf);

} // namespace
