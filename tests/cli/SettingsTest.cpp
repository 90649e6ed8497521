#include "support/Lines.h"
#include "support/SetVariable.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <base/UsageError.h>
#include <usage/Options.h>
#include <usage/Settings.h>

#include <gtest/gtest.h>

#include <filesystem>
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
    return thrownBy<UsageError>([&] { applied(typed); });
}

// No configuration of the user who runs the test takes part.
class Settings : public testing::Test
{
protected:
    SetVariable m_nowhere{"XDG_CONFIG_HOME", "/nowhere"};
};

} // namespace

TEST_F(Settings, PreferTheCommandLineThenTheEnvironmentThenTheFile)
{
    const TextFile file("[sftpclient]\nuser=file\nport=1\nca=file.pem\n[General]\nCertAuthSwitch=0\n");
    const SetVariable user("SFTPCLIENT_USER", "environment");
    const SetVariable port("SFTPCLIENT_PORT", "2");
    const Arguments arguments = applied({{"--config", file.path()}, {"--user", "typed"}});
    EXPECT_EQ("typed", arguments.user);
    EXPECT_EQ(2U, arguments.port);
    EXPECT_EQ("file.pem", arguments.ca);
    EXPECT_EQ(file.path(), arguments.configFile);
}

TEST_F(Settings, TakeThePasswordFromTheFirstPlaceThatNamesASource)
{
    const TextFile file("[sftpclient]\npassword-file=file\n");
    const std::string path = file.path();
    EXPECT_EQ("", applied({{"--config", path}, {"--password-stdin", "true"}}).passwordFile);
    EXPECT_EQ("file", applied({{"--config", path}, {"--password-stdin", "false"}}).passwordFile);
    const SetVariable input("SFTPCLIENT_PASSWORD_STDIN", "true");
    EXPECT_EQ("", applied({{"--config", path}}).passwordFile);
    EXPECT_TRUE(applied({{"--config", path}}).passwordFromInput);
    EXPECT_FALSE(applied({{"--password-file", "typed"}}).passwordFromInput);
}

TEST_F(Settings, TreatAnEmptyVariableAsUnset)
{
    const TextFile file("[sftpclient]\nuser=file\n");
    const SetVariable config("SFTPCLIENT_CONFIG", file.path());
    const SetVariable user("SFTPCLIENT_USER", "");
    EXPECT_EQ("file", applied({}).user);
}

// A host has no operation but its six.
TEST_F(Settings, RunOnlyAHostsOperationsAsAHost)
{
    const SetVariable asHost("SFTPCLIENT_AS_HOST", "true");
    for (const auto& [operation, isAsHost] : {std::pair(Operation::List, true),
                                              {Operation::Stat, false},
                                              {Operation::MakeDirectory, false},
                                              {Operation::Push, false}}) {
        Arguments arguments;
        arguments.operation = operation;
        applySettings({}, arguments);
        EXPECT_EQ(isAsHost, arguments.asHost);
    }
}

TEST_F(Settings, FindTheFileInItsUsualPlace)
{
    EXPECT_EQ("", applied({}).configFile);
    const TemporaryFolder home;
    std::filesystem::create_directories(home.file("sftpclient"));
    std::filesystem::create_directories(home.file(".config/sftpclient"));
    const std::string file = home.write("sftpclient/config", "[sftpclient]\nuser=configured\n");
    home.write(".config/sftpclient/config", "[sftpclient]\nuser=at-home\n");
    {
        const SetVariable configured("XDG_CONFIG_HOME", home.path());
        EXPECT_EQ("configured", applied({}).user);
        EXPECT_EQ(applied({}).configFile, file);
    }
    const SetVariable unset("XDG_CONFIG_HOME", nullptr);
    const SetVariable atHome("HOME", home.path());
    EXPECT_EQ("at-home", applied({}).user);
}

TEST_F(Settings, AcceptSwitchesInWords)
{
    for (const std::string word : {"true", "yes", "on", "1"}) {
        EXPECT_TRUE(applied({{"--quiet", word}}).quiet) << word;
    }
    const SetVariable quiet("SFTPCLIENT_QUIET", "yes");
    EXPECT_TRUE(applied({}).quiet);
    for (const std::string word : {"false", "no", "off", "0"}) {
        EXPECT_FALSE(applied({{"--quiet", word}}).quiet) << word;
    }
    EXPECT_EQ("--quiet must be true or false.", refusalOf({{"--quiet", "maybe"}}));
}

TEST_F(Settings, NameTheSourceOfAnInvalidValue)
{
    EXPECT_EQ("--port must be a number from 1 to 65535.", refusalOf({{"--port", "0"}}));
    const TextFile file("[sftpclient]\nport=x\n");
    const std::string path = file.path();
    EXPECT_EQ("\"port\" in " + path + " must be a number from 1 to 65535.", refusalOf({{"--config", path}}));
    const SetVariable port("SFTPCLIENT_PORT", "70000");
    EXPECT_EQ("SFTPCLIENT_PORT must be a number from 1 to 65535.", refusalOf({{"--config", path}}));
    EXPECT_EQ("--user must not be empty.", refusalOf({{"--user", ""}}));
}

TEST_F(Settings, RejectAnInvalidFile)
{
    const TextFile unknown("[sftpclient]\nprot=1\n");
    EXPECT_EQ("\"prot\" in " + unknown.path() +
                  " is no option; did you mean port? Correct section "
                  "[sftpclient] of the file.",
              refusalOf({{"--config", unknown.path()}}));
    const TextFile password("[sftpclient]\npassword=secret\n");
    EXPECT_FALSE(holds("secret", refusalOf({{"--config", password.path()}})));
    const TextFile other("[sftpclient]\nconfig=other\n");
    EXPECT_TRUE(holds("\"config\" in ", refusalOf({{"--config", other.path()}})));
    const TextFile broken("[sftpclient]\nuser\n");
    EXPECT_EQ("The configuration file " + broken.path() +
                  " cannot be used ('=' character not found in line in line 2): correct it, or name another with "
                  "--config.",
              refusalOf({{"--config", broken.path()}}));
    const TextFile above("user=me\n[sftpclient]\nport=1\n");
    EXPECT_EQ("\"user\" in " + above.path() +
                  " stands above all sections: write it below the line "
                  "[sftpclient].",
              refusalOf({{"--config", above.path()}}));
    const TextFile foreign("mine=1\n[other]\nprot=1\n");
    EXPECT_EQ(kNothingThrown, refusalOf({{"--config", foreign.path()}}));
}

// A host's file may have sections of its own.
TEST_F(Settings, RejectAMisspeltSection)
{
    for (const std::string name : {"Sftpclient", "sftp-client", "SFTPCLEINT"}) {
        const TextFile file("[General]\nCertAuthSwitch=0\n[" + name + "]\nuser=me\n");
        EXPECT_EQ("Section [" + name + "] in " + file.path() + " is none of the command's: write [sftpclient].",
                  refusalOf({{"--config", file.path()}}));
    }
    for (const std::string text : {"[sftp]\nuser=me\n", "[ftpserver]\nuser=me\n", "[SFtpClient]\nmine=1\n",
                                   "[sftpclient]\nport=1\n[SFtpClient]\nuser=me\n"}) {
        const TextFile file(text);
        EXPECT_EQ(kNothingThrown, refusalOf({{"--config", file.path()}})) << text;
    }
}

TEST_F(Settings, HaveOneNameInThreeSpellings)
{
    std::set<std::string> names;
    for (const Option& option : options()) {
        EXPECT_TRUE(names.insert(option.name).second) << option.name;
    }
    const Option option{"--two-words", "", "", nullptr};
    EXPECT_EQ("SFTPCLIENT_TWO_WORDS", variableOf(option));
    EXPECT_EQ("two-words", keyOf(option));
}
