// A process with more rights than its caller ignores the environment.
#include "harness/Served.h"

#include <unistd.h>

#include <filesystem>

namespace {

constexpr gid_t kOtherGroup = 65534;

class SetGroup : public Served
{
protected:
    /// A set-group-ID copy of the command. Needs root.
    SetGroup() : m_command(std::string(SFTPCLIENT_COMMAND_OF_A_GROUP) + "-" + std::to_string(getpid()))
    {
        std::filesystem::copy_file(SFTPCLIENT_COMMAND_OF_A_GROUP, m_command);
        EXPECT_EQ(0, chown(m_command.c_str(), getuid(), kOtherGroup)) << "this test needs root";
        std::filesystem::permissions(m_command, std::filesystem::perms::set_gid, std::filesystem::perm_options::add);
    }
    ~SetGroup() override { std::filesystem::remove(m_command); }

    ProgramResult runIt(const Words& words, const Variables& environment) const
    {
        ProcessSetup setup = commandSetup(words, environment, local(""));
        setup.words.front() = m_command;
        return runProgram(setup);
    }

private:
    std::string m_command;
};

} // namespace

TEST_F(SetGroup, IgnoresTheEnvironment)
{
    serve();
    const std::string noTerminal =
        "sftpclient: There is no password and no terminal to ask for one: give --password-file "
        "FILE, or set SFTPCLIENT_PASSWORD.\n";
    writeFile(local("bad"), "[sftpclient]\nnonsense=1\n");
    std::filesystem::create_directories(local("home/.config/sftpclient"));
    writeFile(local("home/.config/sftpclient/config"), "[sftpclient]\nnonsense=1\n");
    writeFile(local("home/.netrc"), "nonsense");
    const Variables variables{{"SFTPCLIENT_PASSWORD", "secret"},
                              {"SFTPCLIENT_CONFIG", "bad"},
                              {"SFTPCLIENT_PORT", "nonsense"},
                              {"XDG_CONFIG_HOME", local("home/.config")},
                              {"HOME", local("home")}};
    EXPECT_TRUE(sameText(noTerminal, runIt({"ls", url(), "--ca", "none"}, variables).err));
    EXPECT_TRUE(
        sameText("sftpclient: HOME is not set, so there is no ~/.netrc: name the file with --netrc-file FILE.\n",
                 runIt({"ls", plainUrl(), "--ca", "none", "--netrc"}, variables).err));
    EXPECT_EQ(0U, sessions().size());
}

TEST_F(SetGroup, KeepsItsTemporaryFilesToItself)
{
    serve();
    writeFile(local("password"), config.password);
    writeFile(local("config"), "[General]\nCertAuthSwitch=0\n");
    const ProgramResult result = runIt(
        {"ls", url(), "--ca", "none", "--config", "config", "--password-file", "password"}, {{"TMPDIR", "/nowhere"}});
    EXPECT_TRUE(exited(0, result));
}
