// The example that runs as a service. The test is its service manager: it gives the credentials, hears how the service
// is, and sends the signals.
#include "NewFiles.h"
#include "NotifySocket.h"
#include "support/Process.h"
#include "support/ServerFixture.h"
#include "support/TreeFiles.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <regex>

namespace {

namespace fs = std::filesystem;

class BackupAgent : public ServerFixture
{
protected:
    BackupAgent()
    {
        config.tlsRequiredAtLogin = true;
        config.tlsReuseRequired = true;
        fs::create_directory(folder.file("photos"));
        fs::create_directory(folder.file("credentials"));
        folder.write("credentials/password", config.password + "\n");
        folder.write("credentials/ca", authority.certificatePem());
    }

    void serve()
    {
        ServerFixture::serve();
        m_port = server->port();
    }

    /// Whole at once: the agent may look at any time.
    void add(const std::string& name, const std::string& content) const
    {
        const fs::path path = folder.file("photos/" + name);
        fs::create_directories(path.parent_path());
        fs::rename(folder.write("new", content), path);
    }

    /// More than fits between the client and a server that does not read.
    void addLarge(const std::string& name) const
    {
        add(name, "");
        fs::resize_file(folder.file("photos/" + name), 64 << 20);
    }

    void configure(const std::string& more) const
    {
        folder.write("agent.ini", "[Backup]\nUrl=" + directory() + "\nUser=backup\nFolder=" + folder.file("photos") +
                                      "\n" + more + "[Log]\nTarget=" + log() + "\n");
    }

    std::string directory() const { return "ftp://localhost:" + std::to_string(m_port) + "/photos"; }
    std::string log() const { return folder.file("log/transfers.log"); }

    ProcessSetup setup() const
    {
        ProcessSetup setup{{BACKUP_AGENT, folder.file("agent.ini")}};
        setup.environment = {{"CREDENTIALS_DIRECTORY", folder.file("credentials")}, {"NOTIFY_SOCKET", m_socketPath}};
        setup.err = folder.write("journal", "");
        return setup;
    }

    /// Waits for the end of a round with this result, past rounds that had nothing to do and a log that was reopened.
    void waitForRound(const std::string& result) const
    {
        const std::regex other("RELOADING=1|READY=1\nSTATUS=The log was reopened|"
                               "STATUS=Round [0-9]+: 0 sent, 0 failed, [0-9]+ unchanged");
        std::string status = m_manager.next();
        while (std::regex_match(status, other)) {
            status = m_manager.next();
        }
        EXPECT_TRUE(std::regex_match(status, std::regex("STATUS=Round [0-9]+: " + result))) << status;
    }

    /// The journal's lines.
    Lines journal() const { return linesOf(contentOf(folder.file("journal"))); }

    Tree arrived() const { return treeIn(served("photos")); }

    std::string m_socketPath = folder.file("notify");
    NotifySocket m_manager{m_socketPath};
    unsigned m_port = 0;
};

/// How many lines of a log say that an upload ended well.
std::size_t uploadsIn(const std::string& log)
{
    std::size_t found = 0;
    for (const std::string& line : linesOf(contentOf(log))) {
        found += line.find("SFtpSession::UploadFileToSFtpServer()") != std::string::npos ? 1U : 0U;
    }
    return found;
}

} // namespace

TEST_F(BackupAgent, SendsWhatHasChangedAndTellsHowItIs)
{
    add("a.bak", "one");
    add("the sea/b & c.bak", "two");
    serve();
    configure("Interval=1\n");
    Process agent(setup());
    EXPECT_EQ("READY=1\nSTATUS=Started", m_manager.next());
    EXPECT_EQ("STATUS=Round 1: 2 sent, 0 failed, 0 unchanged", m_manager.next());
    EXPECT_TRUE(sameTrees({{"a.bak", "one"}, {"the sea/", ""}, {"the sea/b & c.bak", "two"}}, arrived()));
    add("a.bak", "longer");
    waitForRound("1 sent, 0 failed, 1 unchanged");
    EXPECT_TRUE(sameTrees({{"a.bak", "longer"}, {"the sea/", ""}, {"the sea/b & c.bak", "two"}}, arrived()));
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ("<6>round 1: 2 sent, 0 failed, 0 unchanged", journal().at(0));
    EXPECT_EQ(1U, sessions().size());
}

TEST_F(BackupAgent, SigtermCancelsAndLeavesNothingBehind)
{
    addLarge("deep/large.bak");
    add("never sent.bak", "later");
    fs::create_directories(served("photos/deep"));
    writeFile(served("photos/deep/.other.bak.0123456789ab.part"), "another's");
    writeFile(served("photos/deep/large.bak"), "the backup before");
    misbehave("1/DATA=stall-after:1000");
    serve();
    configure("");
    const NewFiles temporaryFiles(served("photos/deep"));
    Process agent(setup());
    EXPECT_EQ("READY=1\nSTATUS=Started", m_manager.next());
    temporaryFiles.waitFor(1);
    agent.signal(SIGTERM);
    EXPECT_EQ("STOPPING=1\nSTATUS=Cancelling what runs", m_manager.next());
    EXPECT_EQ(0, agent.wait());
    EXPECT_TRUE(sameTrees(
        {{"deep/", ""}, {"deep/.other.bak.0123456789ab.part", "another's"}, {"deep/large.bak", "the backup before"}},
        arrived()));
    EXPECT_EQ(Lines(), journal());
    EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.file("photos")), fs::directory_iterator()));
    EXPECT_EQ(1, std::distance(fs::directory_iterator(folder.file("photos/deep")), fs::directory_iterator()));
}

TEST_F(BackupAgent, SigtermBeforeTheFirstByteLeavesNothingToComplainAbout)
{
    add("a.bak", "one");
    misbehave("1/AUTH=stall");
    struct Beginning
    {
        std::promise<void> promise;
        std::once_flag first;
    };
    const auto begun = std::make_shared<Beginning>(); // the server's, too, which lives longer
    config.onCommand = [begun](const std::string& /*command*/) {
        std::call_once(begun->first, [&begun] { begun->promise.set_value(); });
    };
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    begun->promise.get_future().wait();
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(Lines(), journal());
    EXPECT_FALSE(exists(served("photos")));
}

TEST_F(BackupAgent, SigtermEndsItBetweenRounds)
{
    serve();
    configure("Interval=999999\n");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 0 sent, 0 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGINT);
    EXPECT_EQ("STOPPING=1\nSTATUS=Cancelling what runs", m_manager.next());
    EXPECT_EQ(0, agent.wait());
}

// The first connection stalls in an upload, and every later one before its first reply.
TEST_F(BackupAgent, ASilentServerHoldsUpAShutdownForSecondsOnly)
{
    addLarge("large.bak");
    fs::create_directory(served("photos"));
    misbehave("1/DATA=stall-after:1000");
    misbehave("2/GREETING=stall");
    serve();
    configure("");
    const NewFiles temporaryFiles(served("photos"));
    Process agent(setup());
    temporaryFiles.waitFor(1);
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(1U, arrived().size());
    const std::string said = journal().at(0);
    EXPECT_EQ(0U, said.find("<3>temporary files may remain in " + directory() + "/: 28 ")) << said;
}

TEST_F(BackupAgent, ReportsAFailedFileAndSendsTheOthers)
{
    add("a.bak", "one");
    add("b.bak", "two");
    add("c.bak", "three");
    fs::create_directories(served("photos/b.bak/in the way"));
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 2 sent, 1 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(0U, journal().at(0).find("<3>" + folder.file("photos/b.bak") + ": 21 ")) << journal().at(0);
    EXPECT_EQ("<3>round 1: 2 sent, 1 failed, 0 unchanged", journal().at(1));
}

TEST_F(BackupAgent, ARefusedLoginEndsTheRoundButNotTheService)
{
    add("a.bak", "one");
    add("b.bak", "two");
    serve();
    folder.write("credentials/password", "another");
    configure("");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 0 sent, 1 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(0U, journal().at(0).find("<3>" + folder.file("photos/a.bak") + ": 67 ")) << journal().at(0);
}

TEST_F(BackupAgent, AMissingFolderEndsTheRoundButNotTheService)
{
    serve();
    fs::remove(folder.file("photos"));
    configure("");
    Process agent(setup());
    m_manager.next();
    const std::string status = m_manager.next();
    EXPECT_EQ(0U, status.find("STATUS=Round 1: filesystem error: ")) << status;
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
}

// Without a record: the signal alone makes the file.
TEST_F(BackupAgent, SighupReopensTheLogWithItsNewSettings)
{
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    m_manager.next();
    fs::rename(log(), log() + ".1");
    agent.signal(SIGHUP);
    EXPECT_EQ("RELOADING=1", m_manager.next());
    EXPECT_EQ("READY=1\nSTATUS=The log was reopened", m_manager.next());
    EXPECT_EQ("", contentOf(log()));

    folder.write("agent.ini", "[Log]\nTarget=" + folder.file("elsewhere.log") + "\n");
    agent.signal(SIGHUP);
    EXPECT_EQ("RELOADING=1", m_manager.next());
    EXPECT_EQ("READY=1\nSTATUS=The log was reopened", m_manager.next());
    EXPECT_EQ("", contentOf(folder.file("elsewhere.log")));

    folder.write("agent.ini", "[Log]\nLevel=loud\n");
    agent.signal(SIGHUP);
    EXPECT_EQ("RELOADING=1", m_manager.next());
    EXPECT_EQ("READY=1", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(0U, journal().at(1).find("<3>The log and its settings stay as they are: ")) << journal().at(1);
}

TEST_F(BackupAgent, TalksToASocketWithoutAFile)
{
    serve();
    configure("");
    m_socketPath = "@" + folder.path();
    const NotifySocket manager(m_socketPath);
    Process agent(setup());
    EXPECT_EQ("READY=1\nSTATUS=Started", manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
}

TEST_F(BackupAgent, RunsWithoutAManager)
{
    add("a.bak", "one");
    serve();
    configure("");
    const Pipe errors;
    ProcessSetup alone = setup();
    alone.environment.pop_back();
    alone.err = errors.writer();
    Process agent(alone);
    EXPECT_EQ("<6>round 1: 1 sent, 0 failed, 0 unchanged", errors.line());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
}

// The example's own file for logrotate, with this test's paths, in both of logrotate's ways.
class Rotation : public BackupAgent, public testing::WithParamInterface<bool>
{
protected:
    int rotate(const Process& agent) const
    {
        std::string text = contentOf(EXAMPLES "/backup-agent.logrotate");
        const auto change = [&text](const std::string& what, const std::string& by) {
            const std::string changed = std::regex_replace(text, std::regex(what), by);
            EXPECT_NE(changed, text) << what;
            text = changed;
        };
        change("/var/log/backup-agent/transfers.log", log());
        change("\n    su backup backup", "");
        change("backup backup", std::to_string(getuid()) + " " + std::to_string(getgid()));
        if (GetParam()) {
            change("\n    create [^\n]*", "\n    copytruncate");
            change("\n    postrotate[^]*endscript", "");
        } else {
            change("systemctl reload backup-agent.service", "kill -HUP " + std::to_string(agent.id()));
        }
        const std::string rules = folder.write("logrotate.conf", text);
        const ProgramResult result =
            runProgram({{"logrotate", "--force", "--state", folder.file("logrotate.state"), rules}});
        EXPECT_EQ("", result.out + result.err);
        return result.status;
    }
};

INSTANTIATE_TEST_SUITE_P(Ways, Rotation, testing::Bool(),
                         [](const auto& way) { return way.param ? "Copytruncate" : "Rename"; });

TEST_P(Rotation, LosesNoRecordAndSplitsNone)
{
    add("a.bak", "one");
    serve();
    configure("Interval=1\n");
    Process agent(setup());
    m_manager.next();
    m_manager.next(); // the first round's records are written
    const std::string first = contentOf(log());
    EXPECT_EQ(1U, uploadsIn(log()));
    EXPECT_EQ(0, rotate(agent));
    add("a.bak", "longer");
    waitForRound("1 sent, 0 failed, 0 unchanged");
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(first, contentOf(log() + ".1"));
    EXPECT_EQ(1U, uploadsIn(log()));
    EXPECT_EQ(std::string::npos, contentOf(log()).find('\0'));
}

TEST(BackupAgentAlone, PrintsItsUsage)
{
    const ProgramResult result = runProgram({{BACKUP_AGENT}});
    EXPECT_TRUE(exited(2, result));
    EXPECT_EQ("usage: CREDENTIALS_DIRECTORY=... backup-agent INI-FILE\n", result.err);
}

TEST_F(BackupAgent, SaysWhatIsMissing)
{
    configure("");
    const std::string ini = contentOf(folder.file("agent.ini"));
    const std::map<std::string, std::string> complaints = {
        {"Url=", "<3>Section Backup of the configuration lacks Url.\n"},
        {"User=", "<3>Section Backup of the configuration lacks User.\n"},
        {"Folder=", "<3>Section Backup of the configuration lacks Folder.\n"}};
    for (const auto& [key, complaint] : complaints) {
        folder.write("agent.ini", std::regex_replace(ini, std::regex(key + "[^\n]*"), key));
        const ProgramResult result = runProgram(setup());
        EXPECT_TRUE(exited(1, result));
        EXPECT_EQ(complaint, result.err);
    }
    folder.write("agent.ini", ini);
    fs::remove(folder.file("credentials/password"));
    EXPECT_EQ("<3>" + folder.file("credentials/password") + " cannot be read.\n", runProgram(setup()).err);
}
