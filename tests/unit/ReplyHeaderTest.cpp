#include "transfer/CurlSFtpResponse.h"

#include "support/RecordingHost.h"

#include <gtest/gtest.h>

namespace {

using Headers = std::map<std::string, std::set<std::string>>;

class ReplyHeader : public testing::Test
{
protected:
    ReplyHeader() { recording::reset(); }

    Headers headersOf(const Lines& lines)
    {
        for (const std::string& line : lines) {
            transfer.RecieveHeader(line);
        }
        EXPECT_TRUE(sameLines({}, recording::takeRecords()));
        EXPECT_EQ(0U, transfer.statusCode);
        EXPECT_EQ("", transfer.statusText);
        EXPECT_EQ("", transfer.recvData);
        return transfer.headers;
    }

    CurlSFtpResponse transfer;
};

TEST_F(ReplyHeader, IsTrimmed)
{
    EXPECT_EQ((Headers{{"Content-Length", {"1234"}}}), headersOf({"Content-Length: 1234\r\n"}));
    EXPECT_EQ((Headers{{"Content-Length", {"1234"}}, {"a b", {"c d"}}}), headersOf({" \ta b\v : \f c d \t\r\n"}));
}

TEST_F(ReplyHeader, KeepsEveryValueOfAName)
{
    EXPECT_EQ((Headers{{"A", {"one", "two"}}}), headersOf({"A: two", "A: one"}));
}

TEST_F(ReplyHeader, KeepsEqualValuesOnce) { EXPECT_EQ((Headers{{"A", {"one"}}}), headersOf({"A: one", "A:one\r\n"})); }

TEST_F(ReplyHeader, TreatsNamesAsCaseSensitive)
{
    EXPECT_EQ((Headers{{"A", {"one"}}, {"a", {"one"}}}), headersOf({"A: one", "a: one"}));
}

TEST_F(ReplyHeader, MayLackNameOrValue)
{
    EXPECT_EQ((Headers{{"A", {""}}}), headersOf({"A:"}));
    EXPECT_EQ((Headers{{"A", {""}}, {"", {"", "v"}}}), headersOf({":v", ":"}));
}

TEST_F(ReplyHeader, IsDroppedWithMoreThanOneColon)
{
    EXPECT_EQ(Headers{}, headersOf({"Last-Modified: Tue, 01 Jun 2021 10:00:00 GMT", "a::b", "a:b:", "::"}));
}

TEST_F(ReplyHeader, IsDroppedWithoutAColon) { EXPECT_EQ(Headers{}, headersOf({"", "name value", "a;b"})); }

TEST_F(ReplyHeader, MayHoldZeroBytes)
{
    EXPECT_EQ((Headers{{std::string("a\0b", 3), {std::string("c\0d", 3)}}}),
              headersOf({std::string("a\0b:c\0d\r\n", 9)}));
}

} // namespace
