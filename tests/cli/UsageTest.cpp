#include "harness/RunCommand.h"

#include <gtest/gtest.h>

namespace {

void expectRefusal(const std::vector<std::string>& arguments, const std::string& message)
{
    const CommandResult result = runCommand(arguments, {{"SFTPCLIENT_PASSWORD", "secret"}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "sftpclient: " + message + "\n");
}

// What the command line itself tells to be wrong.
void expectWrongUsage(const std::vector<std::string>& arguments, const std::string& message)
{
    expectRefusal(arguments, message + "\nRun sftpclient --help for the usage.");
}

} // namespace

TEST(Usage, NeedsAnOperation)
{
    expectWrongUsage({}, "Name an operation: test, ls, get, put, mv or rm");
    expectWrongUsage({"frob"}, "The following argument was not expected: frob");
}

TEST(Usage, NeedsEveryPartOfTheForm)
{
    const std::vector<std::string> common{"--user", "me", "--ca", "none"};
    const auto with = [&common](std::vector<std::string> form) {
        form.insert(form.end(), common.begin(), common.end());
        return form;
    };
    expectWrongUsage(with({"test"}), "URL is required");
    expectWrongUsage(with({"ls"}), "URL is required");
    expectWrongUsage(with({"get", "ftp://host/x"}), "LOCAL is required");
    expectWrongUsage(with({"put", "file"}), "URL is required");
    expectWrongUsage(with({"mv", "ftp://host/", "old"}), "NEW is required");
    expectWrongUsage(with({"rm", "ftp://host/"}), "NAME is required");
    expectWrongUsage(with({"rm", "ftp://host/", "name", "other"}), "The following argument was not expected: other");
    expectWrongUsage({"test", "ftp://host/", "--ca", "none"}, "--user is required");
}

TEST(Usage, RefusesAPasswordOnTheCommandLine)
{
    expectWrongUsage({"test", "ftp://host/", "--user", "me", "--ca", "none", "--password=secret"},
                     "The following argument was not expected: --password=secret");
}

TEST(Usage, RefusesAPortOutOfRange)
{
    for (const std::string port : {"0", "65536"}) {
        expectWrongUsage({"test", "ftp://host/", "--user", "me", "--ca", "none", "--port", port},
                         "--port: Value " + port + " not in range 1 to 65535");
    }
}

TEST(Usage, RefusesFilesThatAreNotThere)
{
    for (const std::string option : {"--config", "--password-file"}) {
        expectWrongUsage({"test", "ftp://host/", "--user", "me", "--ca", "none", option, "/nowhere"},
                         option + ": File does not exist: /nowhere");
    }
}

TEST(Usage, NamesTheRemedyForAMissingCertificate)
{
    expectRefusal({"get", "ftps://host/x", "local", "--user", "me"},
                  "The server's CA certificate is missing: give --ca FILE or --ca none.");
}

TEST(Usage, RefusesABlankInAName)
{
    expectRefusal({"mv", "ftp://host/", "old", "new name", "--user", "me", "--ca", "none"},
                  "NEW must not be empty or hold a blank: the server's command is split there.");
}

TEST(Usage, NeedsATerminalToAskAt)
{
    const CommandResult result = runCommand({"test", "ftp://host/", "--user", "me", "--ca", "none"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "sftpclient: There is no password and no terminal to ask for one: give --password-file FILE, "
                          "or set SFTPCLIENT_PASSWORD.\n");
}

TEST(Usage, HelpIsNoError)
{
    for (const std::vector<std::string>& form : std::vector<std::vector<std::string>>{{"--help"}, {"get", "--help"}}) {
        const CommandResult result = runCommand(form);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find("Result: one line \"OPERATION: CODE TEXT\""), std::string::npos);
    }
}
