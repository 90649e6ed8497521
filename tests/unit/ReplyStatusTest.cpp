#include "transfer/CurlSFtpResponse.h"

#include "support/Memory.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>

#include <new>

using recording::takeRecords;

namespace {

class ReplyStatus : public testing::Test
{
protected:
    ReplyStatus() { recording::reset(); }

    // The object starts with a code that no line here carries.
    void expectTaken(const std::string& line, uint32_t code, const std::string& text)
    {
        CurlSFtpResponse transfer;
        transfer.statusCode = 7;
        transfer.ParseStatusLine(line);
        EXPECT_EQ(code, transfer.statusCode) << line;
        EXPECT_EQ(text, transfer.statusText) << line;
        expectRestUntouched(transfer);
        EXPECT_TRUE(sameLines({}, takeRecords())) << line;
    }

    void expectRefused(const std::string& line) { expectUnchanged(line, {record(line)}); }

    void expectIgnored(const std::string& line) { expectUnchanged(line, {}); }

    static std::string record(const std::string& line)
    {
        return "4 SFtpClient 77 CurlSFtpResponse::ParseStatusLine(): 0|Parse status line failed. Status line is |" +
               line + "|";
    }

private:
    static void expectUnchanged(const std::string& line, const Lines& records)
    {
        CurlSFtpResponse transfer;
        transfer.statusCode = 7;
        transfer.statusText = " untrimmed ";
        transfer.ParseStatusLine(line);
        EXPECT_EQ(7U, transfer.statusCode) << line;
        EXPECT_EQ(" untrimmed ", transfer.statusText) << line;
        expectRestUntouched(transfer);
        EXPECT_TRUE(sameLines(records, takeRecords())) << line;
    }

    static void expectRestUntouched(const CurlSFtpResponse& transfer)
    {
        EXPECT_EQ(2, transfer.m_ErrorCode);
        EXPECT_EQ("", transfer.recvData);
        EXPECT_TRUE(transfer.headers.empty());
        EXPECT_EQ("", transfer.cert);
    }
};

TEST_F(ReplyStatus, HasItsCodeInTheSecondWordAndItsTextAfterIt)
{
    expectTaken("V1 200 OK", 200, "OK");
    expectTaken("V1 200 OK\r\n", 200, "OK");
    expectTaken("V1 200 Very well done", 200, "Very well done");
    expectTaken(" 200 OK", 200, "OK");
}

TEST_F(ReplyStatus, MayLackAText)
{
    expectTaken("V1 200", 200, "");
    expectTaken("V1 200\r\n", 200, "");
    expectTaken("V1 200 ", 200, "");
    expectTaken("V1 200 \t \r\n", 200, "");
}

TEST_F(ReplyStatus, KeepsTheBlanksInsideItsText)
{
    expectTaken("V1 200  two   words  ", 200, "two   words");
    expectTaken("V1 200 a\tb\t", 200, "a\tb");
}

TEST_F(ReplyStatus, TrimsItsCode) { expectTaken("V1 \t200\v\f\t OK", 200, "OK"); }

TEST_F(ReplyStatus, AcceptsEvery32BitCode)
{
    expectTaken("V1 0 OK", 0, "OK");
    expectTaken("V1 000200 OK", 200, "OK");
    expectTaken("V1 2147483648 OK", 2147483648U, "OK");
    expectTaken("V1 4294967295 OK", 4294967295U, "OK");
    expectRefused("V1 4294967296 OK");
    expectRefused("V1 42949672950 OK");
}

TEST_F(ReplyStatus, AcceptsASign)
{
    expectTaken("V1 +200 OK", 200, "OK");
    expectTaken("V1 -1 OK", 4294967295U, "OK");
    expectTaken("V1 -4294967295 OK", 1, "OK");
    expectTaken("V1 -0 OK", 0, "OK");
    expectRefused("V1 -4294967296 OK");
    expectRefused("V1 + OK");
    expectRefused("V1 - OK");
    expectRefused("V1 +-1 OK");
}

TEST_F(ReplyStatus, IsRejectedIfItsSecondWordIsNotANumber)
{
    expectRefused("220 Service ready");
    expectRefused("220 Service ready\r\n");
    expectRefused("V1  200 OK");
    expectRefused("V1 ");
    expectRefused(" ");
    expectRefused("V1 \r\n");
    expectRefused("V1 20O OK");
    expectRefused("V1 200x OK");
    expectRefused("V1 x200 OK");
    expectRefused("V1 0x10 OK");
    expectRefused("V1 200.0 OK");
    expectRefused("V1 2,000 OK");
    expectRefused(std::string("V1 200\0 OK", 10));
}

TEST_F(ReplyStatus, DoesNotSplitAtTabs)
{
    expectRefused("V1 200\tOK");
    expectRefused("V1\t200 OK");
    expectIgnored("V1\t200\tOK");
}

TEST_F(ReplyStatus, IsIgnoredWithFewerThanTwoWords)
{
    expectIgnored("");
    expectIgnored("\r\n");
    expectIgnored("200");
    expectIgnored("200\n");
}

TEST_F(ReplyStatus, AddsItsWordsToThoseOfEarlierLines)
{
    CurlSFtpResponse transfer;
    transfer.ParseStatusLine("V1 200 OK\r\n");
    transfer.ParseStatusLine("X 226 Transfer complete\r\n");
    EXPECT_EQ(226U, transfer.statusCode);
    EXPECT_EQ("OK Transfer complete", transfer.statusText);
    transfer.ParseStatusLine("220 Service ready");
    EXPECT_EQ(226U, transfer.statusCode);
    EXPECT_EQ("OK Transfer complete", transfer.statusText);
    transfer.ParseStatusLine("X 227");
    EXPECT_EQ(227U, transfer.statusCode);
    EXPECT_EQ("OK Transfer complete", transfer.statusText);
}

TEST_F(ReplyStatus, TrimsTheWholeText)
{
    CurlSFtpResponse transfer;
    transfer.statusText = "\r\n kept ";
    transfer.ParseStatusLine("V1 1");
    EXPECT_EQ("kept", transfer.statusText);
    transfer.statusText = "  kept ";
    transfer.ParseStatusLine("V1 1 more\t");
    EXPECT_EQ("kept  more", transfer.statusText);
}

TEST_F(ReplyStatus, TakesFullEffectOrNoneIfMemoryRunsOut)
{
    const std::string line = "protocol 200 a text that is too long for a string without a block of its own";
    const std::string before = "the text of the lines before this one, long as well";
    const std::string after = before + line.substr(line.find(" a text"));
    CurlSFtpResponse transfer;
    // Splitting comes first and lets the exception propagate; later failures are logged.
    unsigned passed = 0;
    unsigned recorded = 0;
    for (bool taken = false; !taken;) {
        transfer.statusCode = 7;
        transfer.statusText = before;
        transfer.statusText.shrink_to_fit();
        const memory::Watch watch;
        memory::failAllocation(passed + recorded + 1);
        bool thrown = false;
        try {
            transfer.ParseStatusLine(line);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        const memory::Pause pause;
        const Lines records = takeRecords();
        taken = !thrown && records.empty();
        if (thrown) {
            EXPECT_EQ(0U, recorded);
            EXPECT_TRUE(sameLines({}, records));
            ++passed;
        } else if (!taken) {
            EXPECT_TRUE(sameLines({record(line)}, records));
            ++recorded;
        }
        EXPECT_EQ(taken ? 200U : 7U, transfer.statusCode);
        EXPECT_EQ(taken ? after : before, transfer.statusText);
    }
    EXPECT_GT(passed, 0U);
    EXPECT_GT(recorded, 1U);
}

} // namespace
