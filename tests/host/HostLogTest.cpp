#include "harness/AppliedSettings.h"
#include "harness/LogCapture.h"

#include <HostLog.h>
#include <LogProxy.h>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

std::string lineOf(int level, const std::string& text, const HostLogSettings& settings = {})
{
    const LogCapture capture;
    const AppliedSettings applied(settings);
    LogProxy(level, "SFtpClient", 7, "SFtpClient::Listsftpdir()", 41) << text;
    return capture.withoutTimes();
}

std::string jsonOf(int level, const std::string& text)
{
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    return lineOf(level, text, settings);
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string levelsThatPass(LogLevel lowest)
{
    HostLogSettings settings;
    settings.level = lowest;
    std::string passed;
    for (const int level : {1, 2, 4, 3, 0}) {
        passed += lineOf(level, "0x", settings).empty() ? "" : std::to_string(level);
    }
    return passed;
}

} // namespace

TEST(HostLog, WritesOneLineARecord)
{
    const LogCapture capture;
    LogProxy(4, "SFtpClient", 18446744073709551615UL, "SFtpClient::Listsftpdir()", 41) << 0 << "no " << 12 << "";
    EXPECT_EQ(capture.withoutTimes(),
              "TIME error SFtpClient request=18446744073709551615 SFtpClient::Listsftpdir():41 no 12\n");
}

TEST(HostLog, NamesTheLevels)
{
    EXPECT_EQ(lineOf(1, "0x"), "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n");
    EXPECT_EQ(lineOf(2, "0x"), "TIME info SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n");
    EXPECT_EQ(lineOf(4, "0x"), "TIME error SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n");
    EXPECT_EQ(lineOf(3, "0x"), "TIME error SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n");
}

TEST(HostLog, LeavesOutOneLeadingZeroAndNoMore)
{
    const std::string begin = "TIME info SFtpClient request=7 SFtpClient::Listsftpdir():41 ";
    EXPECT_EQ(lineOf(2, "00 bytes"), begin + "0 bytes\n");
    EXPECT_EQ(lineOf(2, "0"), begin + "\n");
    EXPECT_EQ(lineOf(2, ""), begin + "\n");
    EXPECT_EQ(lineOf(2, "10"), begin + "10\n");
}

TEST(HostLog, KeepsARecordOnOneLine)
{
    EXPECT_EQ(lineOf(1, "0550 a\r\nTIME error forged \x1b[31m \xff"),
              "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 550 a\\r\\nTIME error forged \\x1b[31m "
              "\\xff\n");
    const LogCapture capture;
    LogProxy(1, "m\n", 1, "f\n()", 2) << 0;
    EXPECT_EQ(capture.withoutTimes(), "TIME debug m\\n request=1 f\\n():2 \n");
}

TEST(HostLog, TakesTextAsItIs)
{
    EXPECT_EQ(lineOf(1, "0{} {0} %s %v"),
              "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 {} {0} %s %v\n");
}

TEST(HostLog, WritesOneJsonObjectARecord)
{
    const std::string begin =
        R"*(","module":"SFtpClient","request":7,"function":"SFtpClient::Listsftpdir()","line":41,)*";
    EXPECT_EQ(jsonOf(4, "0550 \"a\"\r\n{} %v \xff"),
              R"({"time":"TIME","level":"error)" + begin + R"("text":"550 \"a\"\r\n{} %v \ufffd"})" + "\n");
    EXPECT_EQ(jsonOf(1, "0"), R"({"time":"TIME","level":"debug)" + begin + "\"text\":\"\"}\n");
}

TEST(HostLog, EscapesAllTextsOfAJsonObject)
{
    const LogCapture capture;
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    const AppliedSettings applied(settings);
    LogProxy(2, "m\n", 18446744073709551615UL, "f\"()", 4294967295U) << 0 << "x";
    EXPECT_EQ(capture.withoutTimes(),
              std::string(R"({"time":"TIME","level":"info","module":"m\n","request":18446744073709551615,)") +
                  R"*("function":"f\"()","line":4294967295,"text":"x"})*" + "\n");
}

// Escaped, a byte becomes up to six.
TEST(HostLog, BoundsTheTextsOfARecord)
{
    const std::string begin = "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 ";
    const std::string longest(65536, 'x');
    EXPECT_EQ(lineOf(1, "0" + longest), begin + longest + "\n");
    EXPECT_EQ(lineOf(1, "0" + longest + "y"), begin + longest + " [1 bytes left out]\n");
    EXPECT_EQ(lineOf(1, "0" + std::string(1000000, '\x01')),
              begin + repeated("\\x01", 65536) + " [934464 bytes left out]\n");
    EXPECT_NE(jsonOf(1, "0" + std::string(1000000, '\x01'))
                  .find("\"text\":\"" + repeated("\\u0001", 65536) + " [934464 bytes left out]\"}\n"),
              std::string::npos);
    const LogCapture capture;
    LogProxy(1, longest + "yy", 0, longest + "yyy", 1) << 0;
    EXPECT_EQ(capture.withoutTimes(),
              "TIME debug " + longest + " [2 bytes left out] request=0 " + longest + " [3 bytes left out]:1 \n");
}

TEST(HostLog, BoundsAJsonObjectsOtherTextsToo)
{
    const LogCapture capture;
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    const AppliedSettings applied(settings);
    const std::string longest(65536, 'x');
    LogProxy(1, longest + "yy", 0, longest + "yyy", 1) << 0;
    EXPECT_EQ(capture.withoutTimes(), R"({"time":"TIME","level":"debug","module":")" + longest +
                                          R"( [2 bytes left out]","request":0,"function":")" + longest +
                                          R"( [3 bytes left out]","line":1,"text":""})" + "\n");
}

TEST(HostLog, DoesNotCutACharacterApart)
{
    const std::string begin = "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 ";
    const std::string emoji = "\xf0\x9f\x98\x80";
    for (const std::size_t before : {65532U, 65533U, 65534U, 65535U, 65536U}) {
        const std::string text(before, 'x');
        EXPECT_EQ(lineOf(1, "0" + text + emoji + "yy"),
                  begin + text + (before == 65532 ? emoji + " [2" : " [6") + " bytes left out]\n")
            << before;
    }
    EXPECT_EQ(lineOf(1, "0" + std::string(65540, '\x80')), begin + repeated("\\x80", 65532) + " [8 bytes left out]\n");
}

TEST(HostLog, LeavesOutWhatIsBelowItsLevel)
{
    EXPECT_EQ(levelsThatPass(LogLevel::Debug), "12430");
    EXPECT_EQ(levelsThatPass(LogLevel::Info), "2430");
    EXPECT_EQ(levelsThatPass(LogLevel::Error), "430");
}

TEST(HostLog, WritesARecordWhileAnotherIsOpen)
{
    const LogCapture capture;
    {
        LogProxy outer(1, "m", 0, "outer()", 1);
        outer << 0 << "begun, ";
        LogProxy(1, "m", 0, "inner()", 2) << 0 << "inner";
        outer << "ended";
    }
    EXPECT_EQ(capture.withoutTimes(), "TIME debug m request=0 inner():2 inner\nTIME debug m request=0 outer():1 begun, "
                                      "ended\n");
}

TEST(HostLog, GoesToStandardErrorAtFirst)
{
    testing::internal::CaptureStderr();
    LogProxy(2, "m", 0, "f()", 1) << 0 << "seen";
    EXPECT_EQ(replaceTimes(testing::internal::GetCapturedStderr()), "TIME info m request=0 f():1 seen\n");
}

// In a process of its own, for there is no way back.
TEST(HostLogDeathTest, LeavesOutWhatIsNoFailure)
{
    EXPECT_EXIT(
        {
            HostLog::instance().setFailuresOnly();
            LogProxy(1, "m", 0, "f()", 1) << 0 << "detail";
            LogProxy(2, "m", 0, "f()", 2) << 0 << "end";
            LogProxy(4, "m", 0, "f()", 3) << 0 << "failure";
            _exit(0);
        },
        testing::ExitedWithCode(0), "^[^ ]+ error m request=0 f\\(\\):3 failure\n$");
}
