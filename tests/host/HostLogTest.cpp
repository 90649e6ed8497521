#include "harness/AppliedSettings.h"
#include "support/Lines.h"
#include "support/LogCapture.h"

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

TEST(HostLog, WritesOneLinePerRecord)
{
    const LogCapture capture;
    LogProxy(4, "SFtpClient", 18446744073709551615UL, "SFtpClient::Listsftpdir()", 41) << 0 << "no " << 12 << "";
    EXPECT_TRUE(sameText("TIME error SFtpClient request=18446744073709551615 SFtpClient::Listsftpdir():41 no 12\n",
                         capture.withoutTimes()));
}

TEST(HostLog, NamesTheLevels)
{
    EXPECT_EQ("TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n", lineOf(1, "0x"));
    EXPECT_EQ("TIME info SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n", lineOf(2, "0x"));
    EXPECT_EQ("TIME error SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n", lineOf(4, "0x"));
    EXPECT_EQ("TIME error SFtpClient request=7 SFtpClient::Listsftpdir():41 x\n", lineOf(3, "0x"));
}

TEST(HostLog, DropsExactlyOneLeadingZero)
{
    const std::string begin = "TIME info SFtpClient request=7 SFtpClient::Listsftpdir():41 ";
    EXPECT_EQ(begin + "0 bytes\n", lineOf(2, "00 bytes"));
    EXPECT_EQ(begin + "\n", lineOf(2, "0"));
    EXPECT_EQ(begin + "\n", lineOf(2, ""));
    EXPECT_EQ(begin + "10\n", lineOf(2, "10"));
}

TEST(HostLog, KeepsARecordOnOneLine)
{
    EXPECT_EQ("TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 550 a\\r\\nTIME error forged \\x1b[31m "
              "\\xff\n",
              lineOf(1, "0550 a\r\nTIME error forged \x1b[31m \xff"));
    const LogCapture capture;
    LogProxy(1, "m\n", 1, "f\n()", 2) << 0;
    EXPECT_TRUE(sameText("TIME debug m\\n request=1 f\\n():2 \n", capture.withoutTimes()));
}

TEST(HostLog, WritesTextUnchanged)
{
    EXPECT_EQ("TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 {} {0} %s %v\n",
              lineOf(1, "0{} {0} %s %v"));
}

TEST(HostLog, WritesOneJsonObjectPerRecord)
{
    const std::string begin =
        R"*(","module":"SFtpClient","request":7,"function":"SFtpClient::Listsftpdir()","line":41,)*";
    EXPECT_EQ(R"({"time":"TIME","level":"error)" + begin + R"("text":"550 \"a\"\r\n{} %v \ufffd"})" + "\n",
              jsonOf(4, "0550 \"a\"\r\n{} %v \xff"));
    EXPECT_EQ(R"({"time":"TIME","level":"debug)" + begin + "\"text\":\"\"}\n", jsonOf(1, "0"));
}

TEST(HostLog, EscapesAllTextsOfAJsonObject)
{
    const LogCapture capture;
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    const AppliedSettings applied(settings);
    LogProxy(2, "m\n", 18446744073709551615UL, "f\"()", 4294967295U) << 0 << "x";
    EXPECT_TRUE(
        sameText(std::string(R"({"time":"TIME","level":"info","module":"m\n","request":18446744073709551615,)") +
                     R"*("function":"f\"()","line":4294967295,"text":"x"})*" + "\n",
                 capture.withoutTimes()));
}

// Escaped, a byte becomes up to six.
TEST(HostLog, LimitsTheTextsOfARecord)
{
    const std::string begin = "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 ";
    const std::string longest(65536, 'x');
    EXPECT_EQ(begin + longest + "\n", lineOf(1, "0" + longest));
    EXPECT_EQ(begin + longest + " [1 bytes left out]\n", lineOf(1, "0" + longest + "y"));
    EXPECT_EQ(begin + repeated("\\x01", 65536) + " [934464 bytes left out]\n",
              lineOf(1, "0" + std::string(1000000, '\x01')));
    EXPECT_TRUE(holds("\"text\":\"" + repeated("\\u0001", 65536) + " [934464 bytes left out]\"}\n",
                      jsonOf(1, "0" + std::string(1000000, '\x01'))));
    const LogCapture capture;
    LogProxy(1, longest + "yy", 0, longest + "yyy", 1) << 0;
    EXPECT_TRUE(
        sameText("TIME debug " + longest + " [2 bytes left out] request=0 " + longest + " [3 bytes left out]:1 \n",
                 capture.withoutTimes()));
}

TEST(HostLog, LimitsTheOtherTextsOfAJsonObjectToo)
{
    const LogCapture capture;
    HostLogSettings settings;
    settings.format = LogFormat::Json;
    const AppliedSettings applied(settings);
    const std::string longest(65536, 'x');
    LogProxy(1, longest + "yy", 0, longest + "yyy", 1) << 0;
    EXPECT_TRUE(sameText(R"({"time":"TIME","level":"debug","module":")" + longest +
                             R"( [2 bytes left out]","request":0,"function":")" + longest +
                             R"( [3 bytes left out]","line":1,"text":""})" + "\n",
                         capture.withoutTimes()));
}

TEST(HostLog, DoesNotSplitACharacter)
{
    const std::string begin = "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 ";
    const std::string emoji = "\xf0\x9f\x98\x80";
    for (const std::size_t before : {65532U, 65533U, 65534U, 65535U, 65536U}) {
        const std::string text(before, 'x');
        EXPECT_EQ(begin + text + (before == 65532 ? emoji + " [2" : " [6") + " bytes left out]\n",
                  lineOf(1, "0" + text + emoji + "yy"))
            << before;
    }
    EXPECT_EQ(begin + repeated("\\x80", 65532) + " [8 bytes left out]\n", lineOf(1, "0" + std::string(65540, '\x80')));
}

TEST(HostLog, DropsRecordsBelowItsLevel)
{
    EXPECT_EQ("12430", levelsThatPass(LogLevel::Debug));
    EXPECT_EQ("2430", levelsThatPass(LogLevel::Info));
    EXPECT_EQ("430", levelsThatPass(LogLevel::Error));
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
    EXPECT_TRUE(sameText("TIME debug m request=0 inner():2 inner\nTIME debug m request=0 outer():1 begun, "
                         "ended\n",
                         capture.withoutTimes()));
}

TEST(HostLog, WritesToStandardErrorByDefault)
{
    testing::internal::CaptureStderr();
    LogProxy(2, "m", 0, "f()", 1) << 0 << "seen";
    EXPECT_EQ("TIME info m request=0 f():1 seen\n", replaceTimes(testing::internal::GetCapturedStderr()));
}

// In a separate process, because it cannot be undone.
TEST(HostLogDeathTest, CanBeLimitedToFailures)
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
