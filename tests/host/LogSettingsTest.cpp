#include "harness/TemporaryFolder.h"

#include <HostLogSettings.h>
#include <IniFile.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

HostLogSettings settingsIn(const std::string& content)
{
    const TemporaryFolder folder;
    return logSettingsFrom(IniFile(folder.write("test.ini", content)));
}

std::string refusalOf(const std::string& key, const std::string& value)
{
    try {
        settingsIn("[Log]\n" + key + "=" + value + "\n");
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no refusal";
}

void expectDefaults(const HostLogSettings& settings)
{
    EXPECT_EQ(settings.file, "");
    EXPECT_EQ(settings.level, LogLevel::Debug);
    EXPECT_EQ(settings.format, LogFormat::Text);
    EXPECT_EQ(settings.maxBytes, 10485760U);
    EXPECT_EQ(settings.files, 5U);
}

} // namespace

TEST(LogSettings, HaveDefaults)
{
    expectDefaults(HostLogSettings());
    expectDefaults(settingsIn(""));
    expectDefaults(settingsIn("[Log]\n[Else]\nLevel=error\n"));
    expectDefaults(settingsIn("[Log]\nTarget=stderr\n"));
}

TEST(LogSettings, AreReadFromTheSection)
{
    const HostLogSettings settings =
        settingsIn("[Log]\nTarget=/var/log/a.log\nLevel=info\nFormat=json\nMaxBytes=1\nFiles=1000\n");
    EXPECT_EQ(settings.file, "/var/log/a.log");
    EXPECT_EQ(settings.level, LogLevel::Info);
    EXPECT_EQ(settings.format, LogFormat::Json);
    EXPECT_EQ(settings.maxBytes, 1U);
    EXPECT_EQ(settings.files, 1000U);
    EXPECT_EQ(settingsIn("[Log]\nLevel=debug\nFormat=text\n").level, LogLevel::Debug);
    EXPECT_EQ(settingsIn("[Log]\nLevel=error\n").level, LogLevel::Error);
}

TEST(LogSettings, RefuseWhatTheyDoNotKnow)
{
    EXPECT_EQ(refusalOf("Target", ""), "[Log] Target: it is empty, but must be stderr or a file");
    EXPECT_EQ(refusalOf("Level", "Error"), "[Log] Level: \"Error\" is not debug, info or error");
    EXPECT_EQ(refusalOf("Format", "xml"), "[Log] Format: \"xml\" is neither text nor json");
    EXPECT_EQ(refusalOf("MaxBytes", "0"), "[Log] MaxBytes: \"0\" is not an integer from 1 to 9223372036854775807");
    EXPECT_EQ(refusalOf("MaxBytes", "10M"), "[Log] MaxBytes: \"10M\" is not an integer from 1 to 9223372036854775807");
    EXPECT_EQ(refusalOf("Files", "0"), "[Log] Files: \"0\" is not an integer from 1 to 1000");
    EXPECT_EQ(refusalOf("Files", "1001"), "[Log] Files: \"1001\" is not an integer from 1 to 1000");
    EXPECT_EQ(refusalOf("level", "info"),
              "[Log] has a key \"level\", but knows only Target, Level, Format, MaxBytes, Files");
}
