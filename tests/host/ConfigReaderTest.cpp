#include "harness/LogCapture.h"
#include "harness/SetVariable.h"

#include <ConfigReader.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

namespace {

constexpr char kVariable[] = "SFTPCLIENT_CONFIG";

class ConfigReaderTest : public testing::Test
{
protected:
    ~ConfigReaderTest() override { std::filesystem::remove(m_path); }

    int switchIn(const std::string& contents)
    {
        std::ofstream(m_path) << contents;
        return ConfigReader::getInt("General", "CertAuthSwitch", true);
    }

    std::string m_path = testing::TempDir() + "ConfigReaderTest-" + std::to_string(getpid()) + ".ini";
    SetVariable m_variable{kVariable, m_path.c_str()};
    LogCapture m_log;
};

} // namespace

TEST_F(ConfigReaderTest, GivesTheDefaultWithoutAFile)
{
    for (const char* const value : {static_cast<const char*>(nullptr), ""}) {
        const SetVariable variable(kVariable, value);
        EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", true), 1);
        EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", false), 0);
    }
    EXPECT_EQ(m_log.text(), "");
}

TEST_F(ConfigReaderTest, GivesTheDefaultForAMissingKey)
{
    std::ofstream(m_path) << "[General]\nOther=7\n[Else]\nCertAuthSwitch=7\n[A.B]\nC=7\n";
    EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", true), 1);
    EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", false), 0);
    EXPECT_EQ(ConfigReader::getInt("Missing", "CertAuthSwitch", false), 0);
    EXPECT_EQ(ConfigReader::getInt("A", "B.C", false), 0);
    EXPECT_EQ(ConfigReader::getInt("A.B", "C", false), 7);
    EXPECT_EQ(m_log.text(), "");
}

TEST_F(ConfigReaderTest, GivesTheInteger)
{
    EXPECT_EQ(switchIn("[General]\nCertAuthSwitch=0\n"), 0);
    EXPECT_EQ(switchIn("; note\n# note\n\n [General] \r\n  CertAuthSwitch = 0 \r\n"), 0);
    EXPECT_EQ(switchIn("[General]\nCertAuthSwitch=2147483647"), 2147483647);
    EXPECT_EQ(switchIn("[General]\nCertAuthSwitch=-3\n"), -3);
    EXPECT_EQ(m_log.text(), "");
}

TEST_F(ConfigReaderTest, CountsWhatIsNoIntegerAsOneAndSaysSo)
{
    for (const std::string value : {"off", "0x0", "0 0", "+0", "", "0.0", "0 ; off", "00000000004294967296"}) {
        const LogCapture log;
        EXPECT_EQ(switchIn("[General]\nCertAuthSwitch=" + value + "\n"), 1) << value;
        const std::string record = log.withoutTimes();
        EXPECT_EQ(record.find("TIME error SFtpClientHost request=0 ConfigReader::getInt():"), 0U) << record;
        EXPECT_NE(record.find(" [General] CertAuthSwitch counts as 1: \"" + value +
                              "\" is no integer. Correct the file that SFTPCLIENT_CONFIG names.\n"),
                  std::string::npos)
            << record;
    }
}

TEST_F(ConfigReaderTest, CountsAFileItCannotReadAsOneAndSaysSo)
{
    EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", false), 1);
    EXPECT_NE(m_log.text().find(" counts as 1: " + m_path), std::string::npos) << m_log.text();
    EXPECT_EQ(switchIn("[General]\nCertAuthSwitch=0\nCertAuthSwitch=0\n"), 1);
    EXPECT_EQ(switchIn("[General]\nCertAuthSwitch=0\n[General]\nCertAuthSwitch=0\n"), 1);
    EXPECT_EQ(switchIn("[General]\nCertAuthSwitch\n"), 1);
    const SetVariable folder(kVariable, testing::TempDir().c_str());
    EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", false), 1);
    const std::string log = m_log.text();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 5) << log;
}

TEST_F(ConfigReaderTest, AnswersManyThreads)
{
    std::ofstream(m_path) << "[General]\nCertAuthSwitch=5\n";
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&right] {
            for (int ask = 0; ask < 100; ++ask) {
                right += ConfigReader::getInt("General", "CertAuthSwitch", true) == 5 ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 800);
}
