#include "harness/Served.h"
#include "harness/TerminalCommand.h"
#include "support/PlantedPassword.h"

#include <base/PercentCode.h>

#include <filesystem>

namespace {

class Secrecy : public Served
{
protected:
    void expectNoPassword(const std::string& text, const std::string& where) const
    {
        for (const std::string& form : PlantedPassword{"", config.password}.forms(config.user)) {
            SCOPED_TRACE(testing::PrintToString(form));
            EXPECT_FALSE(holds(form, text)) << where;
        }
    }

    void expectNoPasswordInFiles() const
    {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
            expectNoPassword(entry.path(), "a file's name");
            if (entry.is_regular_file()) {
                expectNoPassword(contentOf(entry.path()), entry.path());
            }
        }
    }

    std::vector<Words> everyOperation() const
    {
        return {{"test", url()},
                {"put", "sent", url("/new/")},
                {"ls", url("/new/"), "names"},
                {"ls", url("/new/")},
                {"get", url("/new/sent"), "got"},
                {"get", url("/new/missing"), "missing"},
                {"mv", url("/new/"), "sent", "moved"},
                {"rm", url("/new/"), "moved"}};
    }
};

} // namespace

TEST_F(Secrecy, HoldsForEveryOperationWithEveryOutput)
{
    for (const testserver::TlsMode mode : {testserver::TlsMode::Explicit, testserver::TlsMode::Implicit}) {
        config.tls = mode;
        writeFile(local("sent"), "contents");
        serve();
        for (Words form : everyOperation()) {
            form.insert(form.end(), {"--trace", "--json", "--retry=1", "--retry-delay=0"});
            const ProgramResult result = run(form);
            EXPECT_TRUE(holds("> PASS ****", result.err)) << form[0] << result.err;
            expectNoPassword(result.out, "standard output of " + form[0]);
            expectNoPassword(result.err, "standard error of " + form[0]);
        }
        expectNoPasswordInFiles();
    }
}

TEST_F(Secrecy, HoldsForARefusedLogin)
{
    serve({"PASS=reply:530 the password p@ss w%rd/7 of backup is wrong"});
    for (Words form : everyOperation()) {
        writeFile(local("sent"), "contents");
        form.emplace_back("--trace");
        const ProgramResult result = run(form);
        EXPECT_TRUE(holds("530 the password **** of **** is wrong", result.err));
        expectNoPassword(result.out, "standard output of " + form[0]);
        expectNoPassword(result.err, "standard error of " + form[0]);
    }
    expectNoPasswordInFiles();
}

TEST_F(Secrecy, HoldsAtATerminalWithoutATrace)
{
    writeFile(local("sent"), "contents");
    serve();
    for (const Words& form : everyOperation()) {
        SCOPED_TRACE(testing::PrintToString(form));
        TerminalCommand command(setupOf(form));
        command.wait();
        expectNoPassword(command.shown(), "the terminal of " + form[0]);
    }
}

// Whatever the password is, and in whatever form the server repeats it; a reply's code stays what it is.
TEST_F(Secrecy, HoldsForEveryFormInAReply)
{
    for (const std::string password :
         {"220", "550", "2", "0", "CWD", "p@ss w%rd/7", "a \"b", "\xc3\xa4\xe2\x82\xac", "%5b"}) {
        SCOPED_TRACE(password);
        config.password = password;
        std::string forms;
        std::string hidden;
        for (const std::string& form : PlantedPassword{"", password}.forms(config.user)) {
            forms += "[" + asFault(form.substr(0, form.find('='))) + "]";
            hidden += "[****]";
        }
        serve({"CWD=reply:550-" + forms + "\\r\\n550 " + forms});
        const ProgramResult result = run({"ls", url("/d/"), "--json", "--trace", "--quiet"});
        EXPECT_EQ("ls: 78 Access denied to remote resource (the server's last reply: 550 " + hidden + " " + hidden +
                      ")",
                  lastLine(result.err));
        EXPECT_TRUE(holds("\n< 550-" + hidden + "\n< 550 " + hidden + "\n", result.err));
        EXPECT_TRUE(holds("\"reply\":\"550 " + hidden + " " + hidden + "\"", result.out));
    }
}

TEST_F(Secrecy, HoldsForWrongUsage)
{
    serve();
    const std::string password = percentEncoded(config.password);
    for (const Words& form : std::vector<Words>{{"test", "ftp://backup:" + password + "@localhost/"},
                                                {"test", url(), "--password", config.password},
                                                {"test", url(), "--password=" + config.password},
                                                {"test", url(), "-p" + config.password}}) {
        SCOPED_TRACE(testing::PrintToString(form));
        const ProgramResult result = run(form);
        EXPECT_TRUE(exited(2, result));
        expectNoPassword(result.out + result.err, "the refusal");
    }
}
