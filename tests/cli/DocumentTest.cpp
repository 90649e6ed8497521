#include "harness/Served.h"
#include "support/CurlRelease.h"
#include "support/LogCapture.h"

#include <usage/Options.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace {

/// A command that the document shows, and what it shows below it.
struct Shown
{
    std::string command;
    std::string output;
};

std::vector<Shown> sessionsIn(const std::string& document)
{
    std::vector<Shown> sessions;
    bool inside = false;
    for (const std::string& line : linesOf(document)) {
        if (line.rfind("```", 0) == 0) {
            inside = line == "```console";
        } else if (inside && line.rfind("$ ", 0) == 0) {
            sessions.push_back({line.substr(2), ""});
        } else if (inside) {
            sessions.back().output += line + "\n";
        }
    }
    return sessions;
}

std::string replaceEach(std::string text, const std::string& from, const std::string& to)
{
    for (std::string::size_type at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// With `word` in place of each number that follows `mark`.
std::string withoutNumbers(std::string text, const std::string& mark, const std::string& word)
{
    for (std::string::size_type at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
        at += mark.size();
        const std::string::size_type end = std::min(text.find_first_not_of("0123456789.e-", at), text.size());
        text.replace(at, end - at, word);
    }
    return text;
}

// The documents show what the command says with libcurl 7.88.1. With 8.14.1 it has nothing to say about uploads.
std::string withThisLibcurl(std::string output)
{
    if (isCurl814()) {
        output = replaceEach(output,
                             "  SFtpClient, upload:\n"
                             "    but this libcurl can lose the end of an upload over TLS 1.3 and report success\n",
                             "");
        output = replaceEach(output,
                             "  SFtpClient, upload:\n    Use libcurl 8.14.1 or newer, or limit the server to TLS 1.2, "
                             "or compare the sizes after each upload.\n",
                             "");
        output = replaceEach(output, "\nWhy:\n\nWhat to change:\n", "");
    }
    return output;
}

// What differs from one run to the next.
std::string comparable(const std::string& output)
{
    const std::string delays = withoutNumbers(replaceTimes(output), "trying again in ", "DELAY");
    const std::string ports = withoutNumbers(delays, "(|||", "PORT");
    return withoutNumbers(withoutNumbers(ports, "():", "LINE"), "\"seconds\":", "SECONDS");
}

// README.md and the guides that have sessions.
std::vector<std::string> documentsWithSessions()
{
    std::vector<std::string> found;
    std::vector<std::filesystem::path> documents{std::filesystem::path(SFTPCLIENT_SOURCE) / "README.md"};
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(SFTPCLIENT_SOURCE) / "docs")) {
        documents.push_back(entry.path());
    }
    for (const std::filesystem::path& document : documents) {
        if (document.extension() == ".md" && !sessionsIn(contentOf(document)).empty()) {
            found.push_back(document.string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string stemOf(const testing::TestParamInfo<std::string>& document)
{
    return std::filesystem::path(document.param).stem().string();
}

/// The servers that the documents mention, and a folder with the files that they use.
class Document : public Served, public testing::WithParamInterface<std::string>
{
protected:
    Document()
    {
        config.tls = testserver::TlsMode::Implicit;
        writeFile(local("sunday.bak"), std::string(20000, 'x'));
        writeFile(local("password"), config.password + "\n");
        chmod(local("password").c_str(), 0600);
        writeFile(local("ca.pem"), contentOf(ca()));
        std::filesystem::create_directory(local("photos"));
        writeFile(local("photos/cat.jpg"), "eleven of b");
        writeFile(local("photos/dog.jpg"), "twelve of by");
        writeFile(local("photos/list.txt"), "cat.jpg\ndog.jpg...");
        writeFile(local("site.ini"), "[sftpclient]\nuser=backup\npassword-file=password\nca=ca.pem\nquiet=true\n");
        addServer("backup.example.com", {});
        addServer("busy.example.com", {"1/GREETING=reply:421 too many users", "2/GREETING=drop"});
        addServer("lossy.example.com", {"SIZE=reply:213 16384"});
        addServer("common.example.com", {"rename=reply:500 unknown command", "rm=reply:500 unknown command"});
    }

    std::string outputOf(const std::string& command) const
    {
        std::string script = "exec 2>&1; sftpclient() { LD_PRELOAD=$TRUST_LIBRARY $COMMAND \"$@\"; }\n" + command;
        for (const auto& each : m_servers) {
            script = replaceEach(script, each.first, "localhost:" + std::to_string(each.second->port()));
        }
        ProcessSetup setup;
        setup.words = {"/bin/bash", "-c", script};
        setup.environment = {{"COMMAND", SFTPCLIENT_COMMAND},
                             {"TRUST_LIBRARY", SFTPCLIENT_TRUST_LIBRARY},
                             {"SFTPCLIENT_DEFAULT_TRUST", ca()},
                             {"SFTPCLIENT_PASSWORD", config.password}};
        setup.folder = local("");
        std::string output = runProgram(setup).out;
        for (const auto& each : m_servers) {
            output = replaceEach(output, "localhost:" + std::to_string(each.second->port()), each.first);
        }
        return output;
    }

private:
    void addServer(const std::string& name, const std::vector<std::string>& faults)
    {
        config.root = served(name);
        std::filesystem::create_directory(config.root);
        writeFile(served(name + "/notes.txt"), "Kept for a month.\n");
        serve(faults);
        m_servers[name] = std::move(server);
    }

    std::map<std::string, std::unique_ptr<testserver::FtpServer>> m_servers;
};

} // namespace

TEST_P(Document, ShowsWhatHappens)
{
    const std::vector<Shown> sessions = sessionsIn(contentOf(GetParam()));
    ASSERT_FALSE(sessions.empty());
    for (const Shown& shown : sessions) {
        EXPECT_TRUE(sameText(comparable(withThisLibcurl(shown.output)), comparable(outputOf(shown.command))))
            << shown.command;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Document, testing::ValuesIn(documentsWithSessions()), stemOf);

TEST(Documents, AreFound) { EXPECT_GE(documentsWithSessions().size(), 3U); }

TEST(DocumentOptions, ListEveryOption)
{
    const std::string document = contentOf(SFTPCLIENT_SOURCE "/docs/command.md");
    for (const Option& option : options()) {
        const std::string::size_type at = document.find("\n| `" + std::string(option.name));
        ASSERT_NE(at, std::string::npos) << option.name;
        const std::string line = document.substr(at + 1, document.find('\n', at + 1) - at);
        EXPECT_TRUE(holds(" `" + variableOf(option) + "` ", line));
        const bool ofFile = option.name != std::string("--config");
        EXPECT_EQ(line.find(" `" + keyOf(option) + "` ") != std::string::npos, ofFile) << line;
    }
}
