// What the example that runs as a service sends and tells; BackupAgentStopTest.cpp has how it ends.
#include "BackupAgent.h"
#include "HeedModes.h"

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <regex>

namespace {

namespace fs = std::filesystem;

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

TEST_F(BackupAgent, TakesNoLineEndForPartOfThePassword)
{
    add("a.bak", "one");
    folder.write("credentials/password", config.password + "\r\n");
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 1 sent, 0 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
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

TEST_F(BackupAgent, SendsTheOtherFilesIfOneIsRemovedMeanwhile)
{
    add("a.bak", "one");
    add("b.bak", "two");
    add("c.bak", "three");
    config.onCommand = [path = folder.file("photos/b.bak")](const std::string& command) {
        if (command == "STOR") {
            fs::remove(path);
        }
    };
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 2 sent, 1 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(0U, journal().at(0).find("<3>" + folder.file("photos/b.bak") + ": ")) << journal().at(0);
    EXPECT_TRUE(sameTrees({{"a.bak", "one"}, {"c.bak", "three"}}, arrived()));
}

// A file system of its own has a lost+found that only root reads.
TEST_F(BackupAgent, SendsTheOtherFilesIfADirectoryCannotBeRead)
{
    add("a.bak", "one");
    add("lost+found/b.bak", "two");
    serve();
    configure("");
    fs::permissions(folder.file("photos/lost+found"), fs::perms::none);
    Process agent(heedingModes(setup()));
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 1 sent, 1 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    fs::permissions(folder.file("photos/lost+found"), fs::perms::owner_all);
    EXPECT_EQ("<3>" + folder.file("photos/lost+found") + ": Permission denied", journal().at(0));
    EXPECT_TRUE(sameTrees({{"a.bak", "one"}}, arrived()));
}

// Users who name files must not be able to forge lines of the journal.
TEST_F(BackupAgent, ReportsAFileWithALineEndInItsNameOnOneLine)
{
    add("a.bak\n<6>forged", "one");
    serve();
    configure("");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 0 sent, 1 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ(0U, journal().at(0).find("<3>" + folder.file("photos/a.bak\\n<6>forged: 43 "))) << journal().at(0);
    EXPECT_EQ("<3>round 1: 0 sent, 1 failed, 0 unchanged", journal().at(1));
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

TEST_F(BackupAgent, AMissingFolderIsAFailure)
{
    serve();
    fs::remove(folder.file("photos"));
    configure("");
    Process agent(setup());
    m_manager.next();
    EXPECT_EQ("STATUS=Round 1: 0 sent, 1 failed, 0 unchanged", m_manager.next());
    agent.signal(SIGTERM);
    EXPECT_EQ(0, agent.wait());
    EXPECT_EQ("<3>" + folder.file("photos") + ": No such file or directory", journal().at(0));
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
            change("systemctl try-reload-or-restart backup-agent.service", "kill -HUP " + std::to_string(agent.id()));
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
    folder.write("credentials/password", config.password);
    folder.write("credentials/ca", "");
    EXPECT_EQ("<3>" + folder.file("credentials/ca") + " is empty.\n", runProgram(setup()).err);
    fs::remove(folder.file("credentials/password"));
    fs::create_directory(folder.file("credentials/password"));
    EXPECT_EQ("<3>" + folder.file("credentials/password") + " cannot be read.\n", runProgram(setup()).err);
}

// Some of these would make the agent send without a pause.
TEST_F(BackupAgent, RefusesAnIntervalThatIsNone)
{
    for (const std::string interval : {"", "0", "-1", "10m", "31536001", "99999999999999999999"}) {
        configure("Interval=" + interval + "\n");
        const ProgramResult result = runProgram(setup());
        EXPECT_TRUE(exited(1, result));
        EXPECT_EQ("<3>Interval in section Backup of the configuration is \"" + interval +
                      "\", but must be a number of seconds from 1 to 31536000.\n",
                  result.err);
    }
}
