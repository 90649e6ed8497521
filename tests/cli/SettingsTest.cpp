#include "harness/SetVariable.h"
#include "harness/TextFile.h"

#include <base/UsageError.h>
#include <usage/Options.h>
#include <usage/Settings.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace {

Arguments applied(const TypedOptions& typed)
{
    Arguments arguments;
    applySettings(typed, arguments);
    return arguments;
}

std::string refusalOf(const TypedOptions& typed)
{
    try {
        applied(typed);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "taken";
}

// No configuration of the machine's user takes part.
class Settings : public testing::Test
{
protected:
    SetVariable m_nowhere{"XDG_CONFIG_HOME", "/nowhere"};
};

} // namespace

TEST_F(Settings, TakeTheCommandLineBeforeTheEnvironmentBeforeTheFile)
{
    const TextFile file("[sftpclient]\nuser=file\nport=1\nca=file.pem\n[General]\nCertAuthSwitch=0\n");
    const SetVariable user("SFTPCLIENT_USER", "environment");
    const SetVariable port("SFTPCLIENT_PORT", "2");
    const Arguments arguments = applied({{"--config", file.path()}, {"--user", "typed"}});
    EXPECT_EQ(arguments.user, "typed");
    EXPECT_EQ(arguments.port, 2U);
    EXPECT_EQ(arguments.ca, "file.pem");
    EXPECT_EQ(arguments.configFile, file.path());
}

TEST_F(Settings, TakeThePasswordFromTheFirstPlaceThatSaysWhereItIs)
{
    const TextFile file("[sftpclient]\npassword-file=file\n");
    const std::string path = file.path();
    EXPECT_EQ(applied({{"--config", path}, {"--password-stdin", "true"}}).passwordFile, "");
    EXPECT_EQ(applied({{"--config", path}, {"--password-stdin", "false"}}).passwordFile, "file");
    const SetVariable input("SFTPCLIENT_PASSWORD_STDIN", "true");
    EXPECT_EQ(applied({{"--config", path}}).passwordFile, "");
    EXPECT_TRUE(applied({{"--config", path}}).passwordFromInput);
    EXPECT_FALSE(applied({{"--password-file", "typed"}}).passwordFromInput);
}

TEST_F(Settings, TakeAnEmptyVariableForNone)
{
    const TextFile file("[sftpclient]\nuser=file\n");
    const SetVariable config("SFTPCLIENT_CONFIG", file.path().c_str());
    const SetVariable user("SFTPCLIENT_USER", "");
    EXPECT_EQ(applied({}).user, "file");
}

TEST_F(Settings, FindTheFileInItsUsualPlace)
{
    EXPECT_EQ(applied({}).configFile, "");
    const std::filesystem::path home = testing::TempDir() + "sftpclient-settings-" + std::to_string(getpid());
    std::filesystem::create_directories(home / "sftpclient");
    std::filesystem::create_directories(home / ".config" / "sftpclient");
    std::ofstream(home / "sftpclient" / "config") << "[sftpclient]\nuser=configured\n";
    std::ofstream(home / ".config" / "sftpclient" / "config") << "[sftpclient]\nuser=at-home\n";
    {
        const SetVariable configured("XDG_CONFIG_HOME", home.c_str());
        EXPECT_EQ(applied({}).user, "configured");
        EXPECT_EQ(applied({}).configFile, home / "sftpclient" / "config");
    }
    const std::string before = std::getenv("HOME");
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(applied({}).user, "at-home");
    setenv("HOME", before.c_str(), 1);
    std::filesystem::remove_all(home);
}

TEST_F(Settings, AreSwitchesInWords)
{
    for (const std::string word : {"true", "yes", "on", "1"}) {
        EXPECT_TRUE(applied({{"--quiet", word}}).quiet) << word;
    }
    const SetVariable quiet("SFTPCLIENT_QUIET", "yes");
    EXPECT_TRUE(applied({}).quiet);
    for (const std::string word : {"false", "no", "off", "0"}) {
        EXPECT_FALSE(applied({{"--quiet", word}}).quiet) << word;
    }
    EXPECT_EQ(refusalOf({{"--quiet", "maybe"}}), "--quiet must be true or false.");
}

TEST_F(Settings, NameWhereAWrongValueComesFrom)
{
    EXPECT_EQ(refusalOf({{"--port", "0"}}), "--port must be a number from 1 to 65535.");
    const TextFile file("[sftpclient]\nport=x\n");
    const std::string path = file.path();
    EXPECT_EQ(refusalOf({{"--config", path}}), "\"port\" in " + path + " must be a number from 1 to 65535.");
    const SetVariable port("SFTPCLIENT_PORT", "70000");
    EXPECT_EQ(refusalOf({{"--config", path}}), "SFTPCLIENT_PORT must be a number from 1 to 65535.");
    EXPECT_EQ(refusalOf({{"--user", ""}}), "--user must not be empty.");
}

TEST_F(Settings, RefuseAFileThatIsNone)
{
    const TextFile unknown("[sftpclient]\nprot=1\n");
    EXPECT_EQ(refusalOf({{"--config", unknown.path()}}), "\"prot\" in " + unknown.path() +
                                                             " is no option; did you mean port? Correct section "
                                                             "[sftpclient] of the file.");
    const TextFile password("[sftpclient]\npassword=secret\n");
    EXPECT_EQ(refusalOf({{"--config", password.path()}}).find("secret"), std::string::npos);
    const TextFile other("[sftpclient]\nconfig=other\n");
    EXPECT_NE(refusalOf({{"--config", other.path()}}).find("\"config\" in "), std::string::npos);
    const TextFile broken("[sftpclient]\nuser\n");
    EXPECT_EQ(refusalOf({{"--config", broken.path()}}),
              "The configuration file " + broken.path() +
                  " cannot be used ('=' character not found in line in line 2): correct it, or name another with "
                  "--config.");
    const TextFile above("user=me\n[sftpclient]\nport=1\n");
    EXPECT_EQ(refusalOf({{"--config", above.path()}}), "\"user\" in " + above.path() +
                                                           " stands above all sections: write it below the line "
                                                           "[sftpclient].");
    const TextFile foreign("mine=1\n[other]\nprot=1\n");
    EXPECT_EQ(refusalOf({{"--config", foreign.path()}}), "taken");
}

TEST_F(Settings, HaveOneNameInThreeSpellings)
{
    std::set<std::string> names;
    for (const Option& option : options()) {
        EXPECT_TRUE(names.insert(option.name).second) << option.name;
    }
    const Option option{"--two-words", "", "", nullptr};
    EXPECT_EQ(variableOf(option), "SFTPCLIENT_TWO_WORDS");
    EXPECT_EQ(keyOf(option), "two-words");
}
