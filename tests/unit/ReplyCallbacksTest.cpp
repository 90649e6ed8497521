#include "transfer/CurlSFtpResponse.h"

#include "support/Memory.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>

#include <stdexcept>

using recording::takeRecords;

namespace {

using Headers = std::map<std::string, std::set<std::string>>;
using Callback = size_t (*)(void*, size_t, size_t, void*);

class ReplyCallbacks : public testing::Test
{
protected:
    ReplyCallbacks() { recording::reset(); }

    // libcurl passes the size of an item, which is 1, and the count; only the product matters.
    size_t give(Callback callback, std::string bytes, size_t itemSize = 1)
    {
        return callback(bytes.data(), itemSize, bytes.size() / itemSize, &transfer);
    }

    void expectRefused(Callback callback, void* bytes, void* self, const std::string& function)
    {
        EXPECT_EQ(0U, callback(bytes, 1, 3, self));
        EXPECT_TRUE(sameLines({"4 SFtpClient 77 " + function + "(): 0|ptr or self is null|"}, takeRecords()));
        EXPECT_EQ("", transfer.recvData);
        EXPECT_EQ(Headers{}, transfer.headers);
        EXPECT_EQ(0U, transfer.statusCode);
        EXPECT_EQ("", transfer.statusText);
    }

    // Counts the allocations that a callback makes by failing each of them.
    unsigned refusals(Callback callback, void* self, memory::Shortage shortage)
    {
        std::string line = "protocol 200 a text that is too long for a string without a block of its own";
        for (unsigned nth = 1;; ++nth) {
            transfer.recvData = "before";
            transfer.recvData.shrink_to_fit();
            transfer.statusCode = 0;
            transfer.statusText.clear();
            const memory::Watch watch;
            memory::failAllocation(nth, shortage);
            const size_t result = callback(line.data(), 1, line.size(), self);
            const memory::Pause pause;
            takeRecords();
            if (memory::firstUnmet() == nullptr) {
                EXPECT_EQ(self == nullptr ? 0 : line.size(), result);
                return nth - 1;
            }
            EXPECT_TRUE(result == 0 || result == line.size());
            if (result == 0) {
                EXPECT_EQ("before", transfer.recvData);
                EXPECT_EQ(0U, transfer.statusCode);
            }
        }
    }

    CurlSFtpResponse transfer;
    char block[4] = "abc";
};

TEST_F(ReplyCallbacks, DataIsCollectedInOrder)
{
    EXPECT_EQ(5U, give(CurlSFtpResponse::GetDataCallback, std::string("one\0 ", 5)));
    EXPECT_EQ(6U, give(CurlSFtpResponse::GetDataCallback, "two:\r\n", 3));
    EXPECT_EQ(0U, give(CurlSFtpResponse::GetDataCallback, ""));
    EXPECT_EQ(std::string("one\0 two:\r\n", 11), transfer.recvData);
    EXPECT_EQ(Headers{}, transfer.headers);
    EXPECT_TRUE(sameLines({}, takeRecords()));
}

TEST_F(ReplyCallbacks, DataNeedsBothPointers)
{
    expectRefused(CurlSFtpResponse::GetDataCallback, nullptr, &transfer, "CurlSFtpResponse::GetDataCallback");
    expectRefused(CurlSFtpResponse::GetDataCallback, block, nullptr, "CurlSFtpResponse::GetDataCallback");
    expectRefused(CurlSFtpResponse::GetDataCallback, nullptr, nullptr, "CurlSFtpResponse::GetDataCallback");
}

TEST_F(ReplyCallbacks, ALineWithAColonIsAHeader)
{
    EXPECT_EQ(22U, give(CurlSFtpResponse::GetHeaderCallback, "Content-Length: 1234\r\n", 2));
    EXPECT_EQ((Headers{{"Content-Length", {"1234"}}}), transfer.headers);
    EXPECT_EQ(7U, give(CurlSFtpResponse::GetHeaderCallback, "V1 2 a:"));
    EXPECT_EQ(7U, give(CurlSFtpResponse::GetHeaderCallback, ":V1 2 a"));
    EXPECT_EQ((Headers{{"Content-Length", {"1234"}}, {"V1 2 a", {""}}, {"", {"V1 2 a"}}}), transfer.headers);
    EXPECT_EQ(0U, transfer.statusCode);
    EXPECT_EQ("", transfer.recvData);
    EXPECT_TRUE(sameLines({}, takeRecords()));
}

TEST_F(ReplyCallbacks, AColonIsFoundAtAnyPosition)
{
    const std::string name(70000, 'n');
    EXPECT_EQ(name.size() + 7, give(CurlSFtpResponse::GetHeaderCallback, name + ": value"));
    EXPECT_EQ((Headers{{name, {"value"}}}), transfer.headers);
}

TEST_F(ReplyCallbacks, ALineWithoutAColonIsAStatus)
{
    EXPECT_EQ(10U, give(CurlSFtpResponse::GetHeaderCallback, "V1 226 OK\n", 5));
    EXPECT_EQ(226U, transfer.statusCode);
    EXPECT_EQ("OK", transfer.statusText);
    EXPECT_EQ(Headers{}, transfer.headers);
    EXPECT_EQ("", transfer.recvData);
    EXPECT_TRUE(sameLines({}, takeRecords()));
}

TEST_F(ReplyCallbacks, ALineThatNoParserAcceptsDoesNotStopTheTransfer)
{
    EXPECT_EQ(19U, give(CurlSFtpResponse::GetHeaderCallback, "220 Service ready\r\n"));
    EXPECT_TRUE(
        sameLines({"4 SFtpClient 77 CurlSFtpResponse::ParseStatusLine(): 0|Parse status line failed. Status line is "
                   "|220 Service ready\r\n|"},
                  takeRecords()));
    EXPECT_EQ(2U, give(CurlSFtpResponse::GetHeaderCallback, "\r\n"));
    EXPECT_EQ(5U, give(CurlSFtpResponse::GetHeaderCallback, "a:b:c"));
    EXPECT_EQ(0U, give(CurlSFtpResponse::GetHeaderCallback, ""));
    EXPECT_TRUE(sameLines({}, takeRecords()));
    EXPECT_EQ(Headers{}, transfer.headers);
    EXPECT_EQ(0U, transfer.statusCode);
}

TEST_F(ReplyCallbacks, ALineMayHoldZeroBytes)
{
    EXPECT_EQ(8U, give(CurlSFtpResponse::GetHeaderCallback, std::string("a\0b:c\0d\n", 8)));
    EXPECT_EQ((Headers{{std::string("a\0b", 3), {std::string("c\0d", 3)}}}), transfer.headers);
}

TEST_F(ReplyCallbacks, ALineNeedsBothPointers)
{
    expectRefused(CurlSFtpResponse::GetHeaderCallback, nullptr, &transfer, "CurlSFtpResponse::GetHeaderCallback");
    expectRefused(CurlSFtpResponse::GetHeaderCallback, block, nullptr, "CurlSFtpResponse::GetHeaderCallback");
    expectRefused(CurlSFtpResponse::GetHeaderCallback, nullptr, nullptr, "CurlSFtpResponse::GetHeaderCallback");
}

TEST_F(ReplyCallbacks, LetNoExceptionThroughIfMemoryRunsOut)
{
    for (const memory::Shortage shortage : {memory::Shortage::Once, memory::Shortage::ForGood}) {
        EXPECT_LE(2U, refusals(CurlSFtpResponse::GetDataCallback, &transfer, shortage));
        EXPECT_LE(2U, refusals(CurlSFtpResponse::GetDataCallback, nullptr, shortage));
        EXPECT_LE(3U, refusals(CurlSFtpResponse::GetHeaderCallback, &transfer, shortage));
        EXPECT_LE(2U, refusals(CurlSFtpResponse::GetHeaderCallback, nullptr, shortage));
    }
}

TEST_F(ReplyCallbacks, StopTheTransferIfMemoryRunsOut)
{
    std::string data(100, 'x');
    const memory::Watch watch;
    memory::failAllocation(1);
    EXPECT_EQ(0U, CurlSFtpResponse::GetDataCallback(data.data(), 1, data.size(), &transfer));
    memory::failAllocation(2);
    EXPECT_EQ(0U, CurlSFtpResponse::GetDataCallback(data.data(), 1, data.size(), &transfer));
    memory::failAllocation(1);
    EXPECT_EQ(0U, CurlSFtpResponse::GetHeaderCallback(data.data(), 1, data.size(), &transfer));
    memory::failAllocation(2);
    EXPECT_EQ(0U, CurlSFtpResponse::GetHeaderCallback(data.data(), 1, data.size(), &transfer));
}

TEST_F(ReplyCallbacks, AnExceptionFromTheHostsLogStopsTheTransfer)
{
    recording::host().onStep = [](const std::string& step) {
        if (step == "begin") {
            throw std::runtime_error("no log");
        }
    };
    EXPECT_EQ(0U, give(CurlSFtpResponse::GetHeaderCallback, "220 ready"));
    EXPECT_EQ(0U, CurlSFtpResponse::GetHeaderCallback(nullptr, 1, 3, &transfer));
    EXPECT_EQ(0U, CurlSFtpResponse::GetDataCallback(nullptr, 1, 3, &transfer));
    EXPECT_TRUE(sameLines({}, takeRecords()));
}

} // namespace
