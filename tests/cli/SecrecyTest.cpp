#include "harness/Served.h"
#include "harness/TerminalCommand.h"
#include "harness/TextFile.h"

#include <PercentCode.h>

#include <algorithm>
#include <filesystem>

namespace {

class Secrecy : public Served
{
protected:
    void expectNoPassword(const std::string& text, const std::string& where) const
    {
        for (const std::string& form : {config.password, percentEncoded(config.password), lowerCaseEncoded()}) {
            EXPECT_EQ(text.find(form), std::string::npos) << where << " holds the password: " << text;
        }
    }

    void expectNoPasswordInFiles() const
    {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder())) {
            expectNoPassword(entry.path(), "a file's name");
            if (entry.is_regular_file()) {
                expectNoPassword(contentsOf(entry.path()), entry.path());
            }
        }
    }

    std::vector<std::vector<std::string>> everyOperation() const
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

private:
    std::string lowerCaseEncoded() const
    {
        std::string text = percentEncoded(config.password);
        for (std::string::size_type i = 0; i + 2 < text.size(); ++i) {
            if (text[i] == '%') {
                text[i + 1] = static_cast<char>(std::tolower(text[i + 1]));
                text[i + 2] = static_cast<char>(std::tolower(text[i + 2]));
            }
        }
        return text;
    }
};

} // namespace

TEST_F(Secrecy, HoldsForEveryOperationWithEveryOutput)
{
    for (const testserver::TlsMode mode : {testserver::TlsMode::Explicit, testserver::TlsMode::Implicit}) {
        config.tls = mode;
        writeFile(local("sent"), "contents");
        serve();
        for (std::vector<std::string> form : everyOperation()) {
            form.insert(form.end(), {"--trace", "--json", "--retry=1", "--retry-delay=0"});
            const CommandResult result = run(form);
            EXPECT_NE(result.err.find("> PASS ****"), std::string::npos) << form[0] << result.err;
            expectNoPassword(result.out, "standard output of " + form[0]);
            expectNoPassword(result.err, "standard error of " + form[0]);
        }
        expectNoPasswordInFiles();
    }
}

TEST_F(Secrecy, HoldsForARefusedLogin)
{
    serve({"PASS=reply:530 the password p@ss w%rd/7 of backup is wrong"});
    for (std::vector<std::string> form : everyOperation()) {
        writeFile(local("sent"), "contents");
        form.emplace_back("--trace");
        const CommandResult result = run(form);
        EXPECT_NE(result.err.find("530 the password **** of **** is wrong"), std::string::npos) << result.err;
        expectNoPassword(result.out, "standard output of " + form[0]);
        expectNoPassword(result.err, "standard error of " + form[0]);
    }
    expectNoPasswordInFiles();
}

TEST_F(Secrecy, HoldsAtATerminalWithoutATrace)
{
    writeFile(local("sent"), "contents");
    serve();
    for (const std::vector<std::string>& form : everyOperation()) {
        TerminalCommand command(withCa(form), environment(), local(""));
        command.wait();
        expectNoPassword(command.shown(), "the terminal of " + form[0]);
    }
}

TEST_F(Secrecy, HoldsForWrongUsage)
{
    serve();
    const std::string password = percentEncoded(config.password);
    for (const std::vector<std::string>& form :
         std::vector<std::vector<std::string>>{{"test", "ftp://backup:" + password + "@localhost/"},
                                               {"test", url(), "--password", config.password},
                                               {"test", url(), "--password=" + config.password},
                                               {"test", url(), "-p" + config.password}}) {
        const CommandResult result = run(form);
        EXPECT_EQ(result.status, 2);
        expectNoPassword(result.out + result.err, "the refusal");
    }
}
