#include "harness/Served.h"

#include <operation/UploadCheck.h>

namespace {

class UploadCheck : public ServedAsHost
{
protected:
    ProgramResult put(const std::vector<std::string>& faults, std::vector<std::string> options = {})
    {
        writeFile(local("file"), "contents");
        serve(faults);
        options.insert(options.begin(), {"put", "file", url(), "--quiet"});
        return run(options);
    }
};

constexpr char kDone[] = "put: 0 No error\n";

} // namespace

TEST_F(UploadCheck, FailsIfBytesAreMissing)
{
    for (const std::string size : {"5", "0", "9"}) {
        SCOPED_TRACE(size);
        const ProgramResult result = put({"SIZE=reply:213 " + size});
        EXPECT_TRUE(exited(18, result));
        EXPECT_TRUE(sameText("put: 18 the server has " + size +
                                 " bytes of the 8 that were sent: the file there is damaged. Send it again; where "
                                 "that happens often, limit the server to TLS 1.2 or install libcurl 8.14.1 or newer\n",
                             result.err));
    }
}

TEST_F(UploadCheck, ReportsThatItCannotBeMade)
{
    for (const std::string reply :
         {"500 unknown", "502 no", "530 no", "213 abc", "213 ", "213 -5", "213 8 bytes", "213 999999999999999999999"}) {
        SCOPED_TRACE(reply);
        const ProgramResult result = put({"SIZE=reply:" + reply});
        EXPECT_TRUE(exited(0, result));
        EXPECT_TRUE(sameText(
            std::string("put: the size on the server was not checked: the server does not report it\n") + kDone,
            result.err))
            << reply;
    }
    const ProgramResult result = put({"SIZE=reply:550 no"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameText(std::string("put: the size on the server was not checked: asking for it failed: Remote file "
                                     "not found (the server's last reply: 550 no)\n") +
                             kDone,
                         result.err));
}

TEST_F(UploadCheck, FailsIfTheServerIsGone)
{
    const ProgramResult result = put({"2/GREETING=drop"}, {"--json"});
    EXPECT_TRUE(exited(56, result));
    EXPECT_TRUE(sameText("put: 56 all was sent, but the check of its size on the server failed: Failure when receiving "
                         "data from the peer\n",
                         result.err));
    EXPECT_TRUE(holds("\"sizeChecked\":false", result.out));
}

TEST_F(UploadCheck, CanBeSwitchedOff)
{
    const ProgramResult result = put({"SIZE=reply:213 5"}, {"--no-verify"});
    EXPECT_TRUE(exited(0, result));
    EXPECT_TRUE(sameText(kDone, result.err));
    EXPECT_EQ(1U, sessions().size());
}

TEST_F(UploadCheck, AcceptsAnEmptyFile)
{
    writeFile(local("empty"), "");
    serve();
    EXPECT_TRUE(sameText(kDone, run({"put", "empty", url(), "--quiet"}).err));
    EXPECT_EQ("", contentOf(served("empty")));
}

TEST(SizeInReply, IsAPlainNumber)
{
    EXPECT_EQ(0, sizeInReply("213 0\r\n"));
    EXPECT_EQ(53687091200, sizeInReply("213 53687091200\r\n"));
    EXPECT_EQ(12, sizeInReply("213 12"));
    for (const std::string reply : {"", "213", "213 ", "213 \r\n", "213 a", "213 1 ", "213 +1", "213 -1", "550 12"}) {
        SCOPED_TRACE(reply);
        EXPECT_EQ(std::nullopt, sizeInReply(reply)) << reply;
    }
}

TEST(CanCompareSize, KnowsWhatCannotBeCompared)
{
    EXPECT_TRUE(canCompareSize("ftps://host/x"));
    EXPECT_TRUE(canCompareSize("ftp://host/x;type=i"));
    EXPECT_FALSE(canCompareSize("ftp://host/x;type=a"));
    EXPECT_FALSE(canCompareSize("ftp://host/x;type=A"));
    EXPECT_TRUE(canCompareSize("sftp://host/x"));
}
