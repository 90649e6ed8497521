#include "harness/Served.h"
#include "harness/TerminalCommand.h"
#include "harness/TextFile.h"

#include <base/PercentCode.h>

#include <openssl/evp.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace {

// A percent-encoded text with small letters in its codes.
std::string lowerCased(std::string text)
{
    for (std::string::size_type i = 0; i + 2 < text.size(); ++i) {
        if (text[i] == '%') {
            text[i + 1] = static_cast<char>(std::tolower(text[i + 1]));
            text[i + 2] = static_cast<char>(std::tolower(text[i + 2]));
        }
    }
    return text;
}

std::string base64(const std::string& text)
{
    std::string encoded(4 * (text.size() / 3 + 1) + 1, '\0');
    const int size =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    encoded.resize(static_cast<std::size_t>(size));
    return encoded.substr(0, encoded.find('='));
}

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
    std::string lowerCaseEncoded() const { return lowerCased(percentEncoded(config.password)); }
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

// Whatever the password is, and in whatever form the server repeats it; a reply's code stays what it is.
TEST_F(Secrecy, HoldsForEveryFormInAReply)
{
    const std::string user = "backup";
    for (const std::string password :
         {"220", "550", "2", "0", "CWD", "p@ss w%rd/7", "a \"b", "\xc3\xa4\xe2\x82\xac", "%5b"}) {
        config.password = password;
        std::string escaped;
        std::string forms = "[" + percentEncoded(password) + "][" + lowerCased(percentEncoded(password)) + "][";
        for (const char each : password) {
            // The fault's own backslashes are doubled.
            escaped += "\\\\" + std::string(1, each);
        }
        forms += escaped + "][" + base64(user + ":" + password) + "][" + password + "]";
        serve({"CWD=reply:550-" + forms + "\\r\\n550 " + forms});
        const CommandResult result = run({"ls", url("/d/"), "--json", "--trace", "--quiet"});
        const std::string hidden = "[****][****][****][****][****]";
        EXPECT_EQ(lastLine(result.err), "ls: 78 Access denied to remote resource (the server's last reply: 550 " +
                                            hidden + " " + hidden + ")");
        EXPECT_NE(result.err.find("\n< 550-" + hidden + "\n< 550 " + hidden + "\n"), std::string::npos) << result.err;
        EXPECT_NE(result.out.find("\"reply\":\"550 " + hidden + " " + hidden + "\""), std::string::npos) << result.out;
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
