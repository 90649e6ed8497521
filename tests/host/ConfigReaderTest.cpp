#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/SetVariable.h"
#include "support/TemporaryFolder.h"

#include <ConfigReader.h>
#include <HostConfiguration.h>
#include <RequestIdScope.h>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

int certAuthSwitch(bool defaultValue = true) { return ConfigReader::getInt("General", "CertAuthSwitch", defaultValue); }

class ConfigReaderTest : public testing::Test
{
protected:
    int switchIn(const std::string& content)
    {
        load(content);
        return certAuthSwitch();
    }

    void load(const std::string& content) { HostConfiguration::instance().load(m_folder.write("test.ini", content)); }

    TemporaryFolder m_folder;
    LogCapture m_log;
};

TEST_F(ConfigReaderTest, ReturnsTheDefaultForAMissingKey)
{
    load("[General]\nOther=7\n[Else]\nCertAuthSwitch=7\n[A.B]\nC=7\n");
    EXPECT_EQ(1, certAuthSwitch(true));
    EXPECT_EQ(0, certAuthSwitch(false));
    EXPECT_EQ(0, ConfigReader::getInt("Missing", "CertAuthSwitch", false));
    EXPECT_EQ(0, ConfigReader::getInt("A", "B.C", false));
    EXPECT_EQ(7, ConfigReader::getInt("A.B", "C", false));
    EXPECT_EQ("", m_log.text());
}

TEST_F(ConfigReaderTest, ReturnsTheInteger)
{
    EXPECT_EQ(0, switchIn("[General]\nCertAuthSwitch=0\n"));
    EXPECT_EQ(0, switchIn("; note\n# note\n\n [General] \r\n  CertAuthSwitch = 0 \r\n"));
    EXPECT_EQ(2147483647, switchIn("[General]\nCertAuthSwitch=2147483647"));
    EXPECT_EQ(-2147483647 - 1, switchIn("[General]\nCertAuthSwitch=-2147483648\n"));
    EXPECT_EQ("", m_log.text());
}

TEST_F(ConfigReaderTest, ReturnsOneForAnInvalidIntegerAndLogsIt)
{
    for (const std::string value :
         {"off", "0x0", "0 0", "+0", "", "0.0", "0 ; off", "00000000004294967296", "99999999999999999999"}) {
        SCOPED_TRACE(value);
        const LogCapture log;
        EXPECT_EQ(1, switchIn("[General]\nCertAuthSwitch=" + value + "\n")) << value;
        const std::string record = log.withoutTimes();
        EXPECT_EQ(0U, record.find("TIME error SFtpClientHost request=0 ConfigReader::getInt():")) << record;
        EXPECT_TRUE(holds(" [General] CertAuthSwitch counts as 1: \"" + value +
                              "\" is not an integer from -2147483648 to 2147483647. "
                              "Correct the configuration file and reload it.\n",
                          record));
    }
}

TEST_F(ConfigReaderTest, LogsUnderTheThreadsRequestIdentifier)
{
    const RequestIdScope scope(7);
    EXPECT_EQ(1, switchIn("[General]\nCertAuthSwitch=off\n"));
    EXPECT_EQ(
        "TIME error SFtpClientHost request=7 ConfigReader::getInt():LINE [General] CertAuthSwitch counts as 1: "
        "\"off\" is not an integer from -2147483648 to 2147483647. Correct the configuration file and reload it.\n",
        replaceLines(m_log.withoutTimes()));
}

TEST_F(ConfigReaderTest, UsesLoadedValuesUntilTheReload)
{
    EXPECT_EQ(0, switchIn("[General]\nCertAuthSwitch=0\n"));
    m_folder.write("test.ini", "[General]\nCertAuthSwitch=1\n");
    EXPECT_EQ(0, certAuthSwitch());
    HostConfiguration::instance().reload();
    EXPECT_EQ(1, certAuthSwitch());
}

// The configuration before anything was loaded: each in a separate process. The log goes to standard error.
class ConfigReaderDeathTest : public testing::Test
{
protected:
    ConfigReaderDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    static constexpr char kVariable[] = "SFTPCLIENT_CONFIG";

    [[noreturn]] static void answerOfTheFirstQuestion(const char* path)
    {
        const SetVariable variable(kVariable, path);
        _exit(certAuthSwitch(false) + 10);
    }

    [[noreturn]] static void answerOfTheFirstQuestionTo(const std::string& content)
    {
        int answer = 0;
        {
            const TemporaryFolder folder;
            const SetVariable variable(kVariable, folder.write("first.ini", content).c_str());
            answer = certAuthSwitch(false);
        }
        _exit(answer + 10);
    }
};

TEST_F(ConfigReaderDeathTest, ReturnsTheDefaultWithoutAFile)
{
    EXPECT_EXIT(answerOfTheFirstQuestion(nullptr), testing::ExitedWithCode(10), "^$");
}

TEST_F(ConfigReaderDeathTest, ReadsTheFileThatTheVariableNames)
{
    EXPECT_EXIT(answerOfTheFirstQuestionTo("[General]\nCertAuthSwitch=5\n"), testing::ExitedWithCode(15), "^$");
}

TEST_F(ConfigReaderDeathTest, ReturnsOneForAnUnreadableFileAndLogsIt)
{
    EXPECT_EXIT(
        answerOfTheFirstQuestion("/nowhere/missing.ini"), testing::ExitedWithCode(11),
        "error SFtpClientHost request=0 ConfigReader::getInt\\(\\):[0-9]+ \\[General\\] CertAuthSwitch counts as 1: "
        "/nowhere/missing.ini: cannot open file. Correct the configuration file and reload it.\n$");
    EXPECT_EXIT(answerOfTheFirstQuestion("/tmp"), testing::ExitedWithCode(11), " counts as 1: /tmp");
}

TEST_F(ConfigReaderDeathTest, ReturnsOneForAnInvalidFileAndLogsIt)
{
    for (const char* const content :
         {"[General]\nCertAuthSwitch=0\nCertAuthSwitch=0\n",
          "[General]\nCertAuthSwitch=0\n[General]\nCertAuthSwitch=0\n", "[General]\nCertAuthSwitch\n"}) {
        EXPECT_EXIT(answerOfTheFirstQuestionTo(content), testing::ExitedWithCode(11), " counts as 1: /.*first.ini\\(");
    }
}

} // namespace
