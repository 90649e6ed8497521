#include "log/LogStatement.h"

#include "support/Memory.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <stdexcept>

using recording::host;
using recording::takeRecords;

// Long names, so that the strings that carry them are on the heap.
namespace statement {

constexpr const char* kWithSignature = "void statement::writeRecordOfThisThread()";
constexpr const char* kWithName = "statement::writeRecordOfThisThread()";
constexpr const char* kWithoutSignature = "void statement::writeRecordOfNoRequest()";
constexpr const char* kWithoutName = "statement::writeRecordOfNoRequest()";

static unsigned int lineOfRecord = 0;

static void writeRecordOfThisThread()
{
    lineOfRecord = __LINE__ + 1;
    SFTP_LOG(kLogEnd, "text");
}

static void writeRecordOfNoRequest()
{
    lineOfRecord = __LINE__ + 1;
    SFTP_LOG_WITHOUT_REQUEST(kLogDetail, "text");
}

static void writeNullText(const char* text) { SFTP_LOG(kLogFailure, "text " << text); }

static std::string missingPiece() { throw std::runtime_error("no piece"); }

static void writeWithMissingPiece() { SFTP_LOG(kLogFailure, "text " << missingPiece() << "more"); }

} // namespace statement

namespace {

class LogStatement : public testing::Test
{
protected:
    LogStatement() { recording::reset(); }
    ~LogStatement() override { recording::reset(); }

    // Whether a block begins with the text and a zero byte.
    static memory::Test isString(const std::string& text)
    {
        return [&text](std::string_view block) {
            return block.substr(0, text.size() + 1) == std::string_view(text.c_str(), text.size() + 1);
        };
    }

    // What a statement does, and what becomes of the signature and the short name meanwhile.
    static Lines stepsOf(void (*write)(), const std::string& signature, const std::string& name)
    {
        Lines steps;
        host().onStep = [&](const std::string& step) {
            steps.push_back(step + (memory::anyLiving(isString(signature)) ? "" : ", signature missing") +
                            (memory::anyLiving(isString(name)) ? "" : ", name missing"));
        };
        const memory::Observer onRelease = [&](std::string_view block) {
            if (isString(signature)(block)) {
                steps.emplace_back("signature released");
            }
            if (isString(name)(block)) {
                steps.emplace_back("name released");
            }
        };
        {
            const memory::Watch watch(onRelease);
            write();
        }
        host().onStep = nullptr;
        return steps;
    }
};

TEST_F(LogStatement, UsesTheseLevels)
{
    EXPECT_EQ(1, kLogDetail);
    EXPECT_EQ(2, kLogEnd);
    EXPECT_EQ(4, kLogFailure);
}

TEST_F(LogStatement, PassesLevelModuleIdentifierFunctionAndLine)
{
    host().requestId = std::numeric_limits<unsigned long>::max();
    statement::writeRecordOfThisThread();
    ASSERT_EQ(1U, host().records.size());
    const recording::Record& record = host().records[0];
    EXPECT_EQ(2, record.level);
    EXPECT_EQ("SFtpClient", record.module);
    EXPECT_EQ(std::numeric_limits<unsigned long>::max(), record.requestId);
    EXPECT_EQ(statement::kWithName, record.function);
    EXPECT_EQ(statement::lineOfRecord, record.line);
    EXPECT_FALSE(record.bad);
}

TEST_F(LogStatement, PassesNoIdentifierInTheFormWithoutRequest)
{
    statement::writeRecordOfNoRequest();
    ASSERT_EQ(1U, host().records.size());
    const recording::Record& record = host().records[0];
    EXPECT_EQ(1, record.level);
    EXPECT_EQ("SFtpClient", record.module);
    EXPECT_EQ(0UL, record.requestId);
    EXPECT_EQ(statement::kWithoutName, record.function);
    EXPECT_EQ(statement::lineOfRecord, record.line);
    EXPECT_FALSE(record.bad);
}

TEST_F(LogStatement, EvaluatesInOrder)
{
    const Lines expected{"identifier", "begin", "piece 0",       "piece text",
                         "piece ",     "end",   "name released", "signature released"};
    EXPECT_TRUE(sameLines(
        expected, stepsOf(statement::writeRecordOfThisThread, statement::kWithSignature, statement::kWithName)));
}

TEST_F(LogStatement, ReadsNoIdentifierInTheFormWithoutRequest)
{
    const Lines expected{"begin", "piece 0", "piece text", "piece ", "end", "name released", "signature released"};
    EXPECT_TRUE(sameLines(
        expected, stepsOf(statement::writeRecordOfNoRequest, statement::kWithoutSignature, statement::kWithoutName)));
}

TEST_F(LogStatement, ReadsTheIdentifierForEachRecord)
{
    host().requestId = 5;
    statement::writeRecordOfThisThread();
    host().requestId = 6;
    statement::writeRecordOfThisThread();
    const Lines expected{"2 SFtpClient 5 statement::writeRecordOfThisThread(): 0|text|",
                         "2 SFtpClient 6 statement::writeRecordOfThisThread(): 0|text|"};
    EXPECT_TRUE(sameLines(expected, takeRecords()));
}

TEST_F(LogStatement, AcceptsPiecesOfEveryKindInOrder)
{
    SFTP_LOG(kLogDetail, "int " << -5 << " long " << 107374182400LL << " unsigned "
                                << std::numeric_limits<unsigned long>::max() << ' ' << std::string("with\0zero", 9));
    ASSERT_EQ(1U, host().records.size());
    const Lines expected{"0",
                         "int ",
                         "-5",
                         " long ",
                         "107374182400",
                         " unsigned ",
                         std::to_string(std::numeric_limits<unsigned long>::max()),
                         std::string(" "),
                         std::string("with\0zero", 9),
                         ""};
    EXPECT_TRUE(sameLines(expected, host().records[0].pieces));
}

TEST_F(LogStatement, EmitsARecordWithANullText)
{
    statement::writeNullText(nullptr);
    EXPECT_TRUE(sameLines({"4 SFtpClient 77 statement::writeNullText(): 0|text  (bad)"}, takeRecords()));
    statement::writeNullText("known");
    EXPECT_TRUE(sameLines({"4 SFtpClient 77 statement::writeNullText(): 0|text |known|"}, takeRecords()));
}

TEST_F(LogStatement, EmitsARecordWhosePieceThrows)
{
    EXPECT_THROW(statement::writeWithMissingPiece(), std::runtime_error);
    EXPECT_TRUE(sameLines({"4 SFtpClient 77 statement::writeWithMissingPiece(): 0|text "}, takeRecords()));
}

TEST_F(LogStatement, BeginsNoRecordWithoutMemoryForItsNames)
{
    const memory::Watch watch;
    for (unsigned nth = 1;; ++nth) {
        memory::failAllocation(nth);
        try {
            statement::writeRecordOfThisThread();
            const memory::Pause pause;
            EXPECT_GE(nth, 3U) << "the signature and the name are strings of their own";
            break;
        } catch (const std::bad_alloc&) {
            const memory::Pause pause;
            EXPECT_EQ(0U, memory::livingBlocks());
            EXPECT_TRUE(sameLines({}, takeRecords()));
        }
    }
    const memory::Pause pause;
    EXPECT_EQ(1U, takeRecords().size());
    EXPECT_EQ(0U, memory::livingBlocks());
}

} // namespace
