#include "harness/TerminalCommand.h"
#include "support/TemporaryFolder.h"

#include <usage/Commands.h>
#include <usage/Options.h>

#include <gtest/gtest.h>

#include <set>

namespace {

using Names = std::set<std::string>;

// What bash offers for the last of these words, as bash itself splits them, in `folder`.
Names offered(const std::vector<std::string>& words, const std::string& folder = "/")
{
    ProcessSetup setup;
    setup.words = {"/bin/bash", "-c",
                   "source \"$0\" || exit 1; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _sftpclient; "
                   "[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\"",
                   SFTPCLIENT_COMPLETION, "sftpclient"};
    setup.words.insert(setup.words.end(), words.begin(), words.end());
    setup.folder = folder;
    const ProgramResult result = runProgram(setup);
    EXPECT_TRUE(exited(0, result));
    EXPECT_EQ("", result.err);
    const Lines lines = linesOf(result.out);
    return {lines.begin(), lines.end()};
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
    Completion() { m_folder.write("sunday.bak", ""); }

    Names inFolder(const std::vector<std::string>& words) const { return offered(words, m_folder.path()); }

private:
    TemporaryFolder m_folder;
};

const Names kFile{"sunday.bak"};

} // namespace

TEST_F(Completion, OffersEveryOperation)
{
    Names names{"--help", "--version"};
    for (const Command& command : commands()) {
        names.insert(command.name);
    }
    EXPECT_EQ(names, offered({""}));
    EXPECT_EQ((Names{"pull", "push", "put"}), offered({"p"}));
}

TEST_F(Completion, OffersEveryOption)
{
    for (const Command& command : commands()) {
        EXPECT_EQ(optionsOf(command), offered({command.name, "--"})) << command.name;
    }
    EXPECT_EQ(Names{"--trace"}, offered({"get", "ftps", ":", "//host/x", "--tr"}));
}

TEST_F(Completion, OffersFilesWhereAFileIsExpected)
{
    EXPECT_EQ(kFile, inFolder({"put", "su"}));
    EXPECT_EQ(kFile, inFolder({"get", "ftps", ":", "//host/x", "s"}));
    EXPECT_EQ(Names(), inFolder({"mv", "ftps", ":", "//host/", "s"}));
    for (const std::string option : {"--config", "--netrc-file", "--password-file", "--ca"}) {
        EXPECT_EQ(kFile, inFolder({"test", option, "s"})) << option;
        EXPECT_EQ(kFile, inFolder({"test", option, "=", "s"})) << option;
    }
    EXPECT_EQ(kFile, inFolder({"test", "--config", "="}));
    EXPECT_EQ(Names{"none"}, inFolder({"test", "--ca", "n"}));
    EXPECT_EQ(Names(), inFolder({"test", "--port", ""}));
    EXPECT_EQ(1U, inFolder({"test", "--user", "roo"}).count("root"));
}

TEST_F(Completion, KnowsEveryOptionThatTakesAValue)
{
    for (const Option& option : options()) {
        const bool takesValue = *option.value != '\0';
        const std::string operation = option.use == Use::Doctor ? "doctor" : "put";
        EXPECT_EQ(takesValue ? 0U : 1U, inFolder({operation, option.name, "--"}).count("--json")) << option.name;
    }
}

// The other tests call the function as bash does, but would miss a mistake that both make.
TEST(CompletionAtATerminal, WorksWithTheTabKey)
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
