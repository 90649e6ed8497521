#include "harness/LogCapture.h"
#include "harness/Process.h"
#include "harness/Served.h"
#include "harness/TextFile.h"

#include <usage/Options.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

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
    std::istringstream lines(document);
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
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

// What differs from one run to the next.
std::string comparable(const std::string& output)
{
    const std::string ports = withoutNumbers(replaceTimes(output), "(|||", "PORT");
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
        if (document.extension() == ".md" && !sessionsIn(contentsOf(document)).empty()) {
            found.push_back(document.string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string nameOf(const testing::TestParamInfo<std::string>& document)
{
    return std::filesystem::path(document.param).stem().string();
}

/// The servers that the documents speak of, and a folder with the files that they use.
class Document : public Served, public testing::WithParamInterface<std::string>
{
protected:
    Document()
    {
        config.tls = testserver::TlsMode::Implicit;
        writeFile(local("sunday.bak"), std::string(20000, 'x'));
        writeFile(local("password"), config.password + "\n");
        chmod(local("password").c_str(), 0600);
        writeFile(local("ca.pem"), contentsOf(folder() + "/ca.pem"));
        writeFile(local("site.ini"), "[sftpclient]\nuser=backup\npassword-file=password\nca=ca.pem\nquiet=true\n");
        addServer("backup.example.com", {});
        addServer("busy.example.com", {"1/GREETING=reply:421 too many users", "2/GREETING=drop"});
        addServer("lossy.example.com", {"SIZE=reply:213 16384"});
        addServer("common.example.com", {"rename=reply:500 unknown command", "rm=reply:500 unknown command"});
    }

    std::string outputOf(const std::string& command) const
    {
        std::string script = "sftpclient() { LD_PRELOAD=$TRUST_LIBRARY $COMMAND \"$@\"; }\n" + command;
        for (const auto& server : m_servers) {
            script = replaceEach(script, server.first, "localhost:" + std::to_string(server.second->port()));
        }
        const TemporaryFile out;
        ProcessSetup setup;
        setup.words = {"/bin/bash", "-c", script};
        setup.environment = {{"COMMAND", SFTPCLIENT_COMMAND},
                             {"TRUST_LIBRARY", SFTPCLIENT_TRUST_LIBRARY},
                             {"SFTPCLIENT_DEFAULT_TRUST", folder() + "/ca.pem"},
                             {"SFTPCLIENT_PASSWORD", config.password}};
        setup.folder = local("");
        setup.out = out.path();
        setup.err = out.path();
        Process(setup).wait();
        std::string output = contentsOf(out.path());
        for (const auto& server : m_servers) {
            output = replaceEach(output, "localhost:" + std::to_string(server.second->port()), server.first);
        }
        return output;
    }

private:
    void addServer(const std::string& name, const std::vector<std::string>& faults)
    {
        config.root = served(name);
        std::filesystem::create_directory(config.root);
        writeFile(config.root / "notes.txt", "Kept for a month.\n");
        config.faults.clear();
        for (const std::string& fault : faults) {
            config.faults.push_back(testserver::parseFault(fault));
        }
        m_servers[name] = std::make_unique<testserver::FtpServer>(config);
    }

    std::map<std::string, std::unique_ptr<testserver::FtpServer>> m_servers;
};

} // namespace

TEST_P(Document, ShowsWhatHappens)
{
    const std::vector<Shown> sessions = sessionsIn(contentsOf(GetParam()));
    ASSERT_FALSE(sessions.empty());
    for (const Shown& shown : sessions) {
        EXPECT_EQ(comparable(outputOf(shown.command)), comparable(shown.output)) << shown.command;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Document, testing::ValuesIn(documentsWithSessions()), nameOf);

TEST(Documents, AreFound) { EXPECT_GE(documentsWithSessions().size(), 3U); }

TEST(DocumentOptions, AreAllThatThereAre)
{
    const std::string document = contentsOf(SFTPCLIENT_SOURCE "/docs/command.md");
    for (const Option& option : options()) {
        const std::string::size_type at = document.find("\n| `" + std::string(option.name));
        ASSERT_NE(at, std::string::npos) << option.name;
        const std::string line = document.substr(at + 1, document.find('\n', at + 1) - at);
        EXPECT_NE(line.find(" `" + variableOf(option) + "` "), std::string::npos) << line;
        const bool ofFile = option.name != std::string("--config");
        EXPECT_EQ(line.find(" `" + keyOf(option) + "` ") != std::string::npos, ofFile) << line;
    }
}
