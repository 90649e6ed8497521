#include "harness/LogCapture.h"

#include <HostLog.h>
#include <LogProxy.h>
#include <RecordText.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <array>
#include <map>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

namespace {

std::string lineOf(int level, const std::string& text)
{
    const LogCapture capture;
    LogProxy(level, "SFtpClient", 7, "SFtpClient::Listsftpdir()", 41) << text;
    return capture.withoutTimes();
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
    EXPECT_EQ(recordText("m", 1, "f()", 2, "0text"), "m request=1 f():2 text");
    EXPECT_EQ(recordText("m", 1, "f()", 2, "00 bytes"), "m request=1 f():2 0 bytes");
    EXPECT_EQ(recordText("m", 1, "f()", 2, "0"), "m request=1 f():2 ");
    EXPECT_EQ(recordText("m", 1, "f()", 2, ""), "m request=1 f():2 ");
    EXPECT_EQ(recordText("m", 1, "f()", 2, "10"), "m request=1 f():2 10");
}

TEST(HostLog, KeepsARecordOnOneLine)
{
    EXPECT_EQ(lineOf(1, "0550 a\r\nTIME error forged \x1b[31m"),
              "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 550 a\\r\\nTIME error forged \\x1b[31m\n");
    EXPECT_EQ(recordText("m\n", 1, "f\n()", 2, "0"), "m\\n request=1 f\\n():2 ");
}

TEST(HostLog, TakesTextAsItIs)
{
    EXPECT_EQ(lineOf(1, "0{} {0} %s %v"),
              "TIME debug SFtpClient request=7 SFtpClient::Listsftpdir():41 {} {0} %s %v\n");
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

TEST(HostLog, LosesNoRecordWhenItIsSentElsewhereMeanwhile)
{
    constexpr unsigned kThreads = 8;
    constexpr unsigned kRecords = 100;
    std::string log;
    {
        const LogCapture first;
        {
            const LogCapture second;
            std::vector<std::thread> writers;
            for (unsigned i = 0; i < kThreads; ++i) {
                writers.emplace_back([i] {
                    for (unsigned record = 0; record < kRecords; ++record) {
                        LogProxy(1, "m", i, "f()", record) << 0;
                    }
                });
            }
            for (unsigned turn = 0; turn < kRecords; ++turn) {
                HostLog::instance().setDescriptor(turn % 2 == 0 ? first.descriptor() : second.descriptor());
            }
            for (std::thread& writer : writers) {
                writer.join();
            }
            log = second.withoutTimes();
        }
        log += first.withoutTimes();
    }
    std::multiset<std::string> expected;
    for (unsigned i = 0; i < kThreads * kRecords; ++i) {
        expected.insert("TIME debug m request=" + std::to_string(i / kRecords) +
                        " f():" + std::to_string(i % kRecords) + " ");
    }
    std::multiset<std::string> found;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        found.insert(line);
    }
    EXPECT_EQ(found, expected);
}

// Records far longer than what a pipe takes at once: unless each is written under a lock, they mix.
TEST(HostLog, WritesRecordsWholeFromManyThreads)
{
    constexpr unsigned kThreads = 8;
    constexpr unsigned kRecords = 50;
    constexpr size_t kLength = 100000;
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    HostLog::instance().setDescriptor(ends[1]);

    std::string log;
    std::thread reader([&log, &ends] {
        std::array<char, 65536> block = {};
        for (ssize_t count = 0; (count = read(ends[0], block.data(), block.size())) > 0;) {
            log.append(block.data(), static_cast<size_t>(count));
        }
    });
    std::vector<std::thread> writers;
    for (unsigned i = 0; i < kThreads; ++i) {
        writers.emplace_back([i] {
            for (unsigned record = 0; record < kRecords; ++record) {
                LogProxy(1, "m", i, "f()", record) << 0 << std::string(kLength, static_cast<char>('a' + i));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    HostLog::instance().setDescriptor(STDERR_FILENO);
    close(ends[1]);
    reader.join();
    close(ends[0]);

    std::map<std::string, unsigned> seen;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        ++seen[line.substr(line.find(' '))];
    }
    EXPECT_EQ(seen.size(), kThreads * kRecords);
    for (unsigned i = 0; i < kThreads; ++i) {
        for (unsigned record = 0; record < kRecords; ++record) {
            const std::string expected = " debug m request=" + std::to_string(i) + " f():" + std::to_string(record) +
                                         " " + std::string(kLength, static_cast<char>('a' + i));
            ASSERT_EQ(seen[expected], 1U) << "thread " << i << ", record " << record;
        }
    }
}
