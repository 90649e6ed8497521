#include "harness/Served.h"

#include "harness/TextFile.h"

#include <transfer/UploadCheck.h>

namespace {

class UploadCheck : public Served
{
protected:
    CommandResult put(const std::vector<std::string>& faults, std::vector<std::string> options = {})
    {
        writeFile(local("file"), "contents");
        serve(faults);
        options.insert(options.begin(), {"put", "file", url(), "--quiet"});
        return run(options);
    }
};

constexpr char kDone[] = "put: 0 No error\n";

} // namespace

TEST_F(UploadCheck, FailsWhereBytesAreMissing)
{
    for (const std::string size : {"5", "0", "9"}) {
        const CommandResult result = put({"SIZE=reply:213 " + size});
        EXPECT_EQ(result.status, 18);
        EXPECT_EQ(result.err, "put: 18 the server has " + size +
                                  " bytes of the 8 that were sent: the file there is damaged. Send it again; where "
                                  "that happens often, limit the server to TLS 1.2 or install libcurl 8.9 or newer\n");
    }
}

TEST_F(UploadCheck, SaysWhereItCannotBeMade)
{
    for (const std::string reply :
         {"500 unknown", "502 no", "530 no", "213 abc", "213 ", "213 -5", "213 8 bytes", "213 999999999999999999999"}) {
        const CommandResult result = put({"SIZE=reply:" + reply});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err,
                  std::string("put: the size on the server was not checked: the server does not report it\n") + kDone)
            << reply;
    }
    const CommandResult result = put({"SIZE=reply:550 no"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, std::string("put: the size on the server was not checked: asking for it failed: Remote file "
                                      "not found (the server's last reply: 550 no)\n") +
                              kDone);
}

TEST_F(UploadCheck, FailsWhereTheServerIsGone)
{
    const CommandResult result = put({"2/GREETING=drop"}, {"--json"});
    EXPECT_EQ(result.status, 56);
    EXPECT_EQ(result.err,
              "put: 56 all was sent, but the check of its size on the server failed: Failure when receiving "
              "data from the peer\n");
    EXPECT_NE(result.out.find("\"sizeChecked\":false"), std::string::npos) << result.out;
}

TEST_F(UploadCheck, IsLeftOutWhenToldSo)
{
    const CommandResult result = put({"SIZE=reply:213 5"}, {"--no-verify"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, kDone);
    EXPECT_EQ(sessions().size(), 1U);
}

TEST_F(UploadCheck, TakesAnEmptyFileForWhole)
{
    writeFile(local("empty"), "");
    serve();
    EXPECT_EQ(run({"put", "empty", url(), "--quiet"}).err, kDone);
    EXPECT_EQ(contentsOf(served("empty")), "");
}

TEST(SizeInReply, IsAProperNumberAlone)
{
    EXPECT_EQ(sizeInReply("213 0\r\n"), 0);
    EXPECT_EQ(sizeInReply("213 53687091200\r\n"), 53687091200);
    EXPECT_EQ(sizeInReply("213 12"), 12);
    for (const std::string reply : {"", "213", "213 ", "213 \r\n", "213 a", "213 1 ", "213 +1", "213 -1", "550 12"}) {
        EXPECT_EQ(sizeInReply(reply), std::nullopt) << reply;
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
