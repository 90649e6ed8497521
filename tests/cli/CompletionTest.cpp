#include "harness/Process.h"
#include "harness/TerminalCommand.h"
#include "harness/TextFile.h"

#include <usage/Commands.h>
#include <usage/Options.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace {

using Names = std::set<std::string>;

// What bash offers for the last of these words, as bash itself splits them, in `folder`.
Names offered(const std::vector<std::string>& words, const std::string& folder = "/")
{
    const TemporaryFile out;
    const TemporaryFile err;
    ProcessSetup setup;
    setup.words = {"/bin/bash", "-c",
                   "source \"$0\" || exit 1; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _sftpclient; "
                   "[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\"",
                   SFTPCLIENT_COMPLETION, "sftpclient"};
    setup.words.insert(setup.words.end(), words.begin(), words.end());
    setup.folder = folder;
    setup.out = out.path();
    setup.err = err.path();
    EXPECT_EQ(Process(setup).wait(), 0);
    EXPECT_EQ(contentsOf(err.path()), "");
    std::istringstream lines(contentsOf(out.path()));
    Names names;
    for (std::string line; std::getline(lines, line);) {
        names.insert(line);
    }
    return names;
}

Names optionsOf(const Command& command)
{
    Names names{"--help"};
    for (const Option& option : options()) {
        if (belongsTo(option, command.operation)) {
            names.insert(option.name);
        }
    }
    return names;
}

class Completion : public testing::Test
{
protected:
    Completion()
    {
        std::filesystem::create_directories(m_folder);
        std::ofstream(m_folder + "/sunday.bak") << "";
    }
    ~Completion() override { std::filesystem::remove_all(m_folder); }

    Names inFolder(const std::vector<std::string>& words) const { return offered(words, m_folder); }

private:
    std::string m_folder = testing::TempDir() + "sftpclient-completion-" + std::to_string(getpid());
};

const Names kFile{"sunday.bak"};

} // namespace

TEST_F(Completion, OffersEveryOperation)
{
    Names names{"--help", "--version"};
    for (const Command& command : commands()) {
        names.insert(command.name);
    }
    EXPECT_EQ(offered({""}), names);
    EXPECT_EQ(offered({"p"}), Names{"put"});
}

TEST_F(Completion, OffersEveryOption)
{
    for (const Command& command : commands()) {
        EXPECT_EQ(offered({command.name, "--"}), optionsOf(command)) << command.name;
    }
    EXPECT_EQ(offered({"get", "ftps", ":", "//host/x", "--tr"}), Names{"--trace"});
}

TEST_F(Completion, OffersFilesWhereOneIsMeant)
{
    EXPECT_EQ(inFolder({"put", "su"}), kFile);
    EXPECT_EQ(inFolder({"get", "ftps", ":", "//host/x", "s"}), kFile);
    EXPECT_EQ(inFolder({"mv", "ftps", ":", "//host/", "s"}), Names());
    for (const std::string option : {"--config", "--netrc-file", "--password-file", "--ca"}) {
        EXPECT_EQ(inFolder({"test", option, "s"}), kFile) << option;
        EXPECT_EQ(inFolder({"test", option, "=", "s"}), kFile) << option;
    }
    EXPECT_EQ(inFolder({"test", "--config", "="}), kFile);
    EXPECT_EQ(inFolder({"test", "--ca", "n"}), Names{"none"});
    EXPECT_EQ(inFolder({"test", "--port", ""}), Names());
    EXPECT_EQ(inFolder({"test", "--user", "roo"}).count("root"), 1U);
}

TEST_F(Completion, KnowsEveryOptionThatTakesAValue)
{
    for (const Option& option : options()) {
        const bool takesValue = *option.value != '\0';
        const std::string operation = option.use == Use::Doctor ? "doctor" : "put";
        EXPECT_EQ(inFolder({operation, option.name, "--"}).count("--json"), takesValue ? 0U : 1U) << option.name;
    }
}

// The other tests call the function as bash does, and would not notice if they and it agreed on something else.
TEST(CompletionAtATerminal, IsThereForTheTabulatorKey)
{
    ProcessSetup setup;
    setup.words = {"/bin/bash", "--norc", "--noprofile", "-i"};
    setup.environment = {{"TERM", "dumb"}, {"INPUTRC", "/dev/null"}};
    TerminalCommand bash(setup);
    bash.type("source " SFTPCLIENT_COMPLETION "; sftpclient() { printf '<%s>' \"$*\"; exit; }; PS1='rea''dy> '\n");
    bash.shownUpTo("ready> ");
    bash.type("sftpclient doc\t--wr\t\n");
    EXPECT_NO_THROW(bash.shownUpTo("<doctor --write>")) << bash.shown();
    bash.wait();
}
