#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <HostLogSettings.h>
#include <IniFile.h>

#include <gtest/gtest.h>

namespace {

HostLogSettings settingsIn(const std::string& content)
{
    const TemporaryFolder folder;
    return logSettingsFrom(IniFile(folder.write("test.ini", content)));
}

std::string refusalOf(const std::string& key, const std::string& value)
{
    return thrownBy([&] { settingsIn("[Log]\n" + key + "=" + value + "\n"); });
}

void expectDefaults(const HostLogSettings& settings)
{
    EXPECT_EQ("", settings.file);
    EXPECT_EQ(LogLevel::Debug, settings.level);
    EXPECT_EQ(LogFormat::Text, settings.format);
    EXPECT_EQ(10485760U, settings.maxBytes);
    EXPECT_EQ(5U, settings.files);
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
    EXPECT_EQ("/var/log/a.log", settings.file);
    EXPECT_EQ(LogLevel::Info, settings.level);
    EXPECT_EQ(LogFormat::Json, settings.format);
    EXPECT_EQ(1U, settings.maxBytes);
    EXPECT_EQ(1000U, settings.files);
    EXPECT_EQ(LogLevel::Debug, settingsIn("[Log]\nLevel=debug\nFormat=text\n").level);
    EXPECT_EQ(LogLevel::Error, settingsIn("[Log]\nLevel=error\n").level);
}

TEST(LogSettings, RejectUnknownKeysAndValues)
{
    EXPECT_EQ("[Log] Target: it is empty, but must be stderr or a file", refusalOf("Target", ""));
    EXPECT_EQ("[Log] Level: \"Error\" is not debug, info or error", refusalOf("Level", "Error"));
    EXPECT_EQ("[Log] Format: \"xml\" is neither text nor json", refusalOf("Format", "xml"));
    EXPECT_EQ("[Log] MaxBytes: \"0\" is not an integer from 1 to 9223372036854775807", refusalOf("MaxBytes", "0"));
    EXPECT_EQ("[Log] MaxBytes: \"10M\" is not an integer from 1 to 9223372036854775807", refusalOf("MaxBytes", "10M"));
    EXPECT_EQ("[Log] Files: \"0\" is not an integer from 1 to 1000", refusalOf("Files", "0"));
    EXPECT_EQ("[Log] Files: \"1001\" is not an integer from 1 to 1000", refusalOf("Files", "1001"));
    EXPECT_EQ("[Log] has a key \"level\", but knows only Target, Level, Format, MaxBytes, Files",
              refusalOf("level", "info"));
}
