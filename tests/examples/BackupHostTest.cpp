// The example that backs up a folder with a session, run as a newcomer runs it, against the test server.
#include "HeedModes.h"
#include "NewFiles.h"
#include "support/Process.h"
#include "support/ServerFixture.h"
#include "support/TreeFiles.h"

#include <csignal>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr int kThreads = 4;

/// A folder to back up, and a server that requires TLS at login.
class BackupHost : public ServerFixture
{
protected:
    BackupHost()
    {
        config.tlsRequiredAtLogin = true;
        config.tlsReuseRequired = true;
        fs::create_directory(folder.file("photos"));
    }

    void add(const std::string& name, const std::string& content)
    {
        const fs::path path = folder.file("photos/" + name);
        fs::create_directories(path.parent_path());
        writeFile(path, content);
    }

    /// More than fits between the client and a server that does not read.
    void addLarge(const std::string& name)
    {
        add(name, "");
        fs::resize_file(folder.file("photos/" + name), 64 << 20);
    }

    ProcessSetup setup()
    {
        const std::string ini = folder.write("host.ini", "[Log]\nTarget=" + folder.file("host.log") + "\n");
        const std::string ca = folder.write("ca.pem", authority.certificatePem());
        const std::string url = "ftp://localhost:" + std::to_string(server->port()) + "/photos";
        ProcessSetup setup{{BACKUP_HOST, ini, ca, folder.file("photos"), url}};
        setup.environment = {{"HOST_PASSWORD", config.password}};
        setup.out = folder.write("out", "");
        setup.err = folder.write("err", "");
        return setup;
    }

    int backUp() { return Process(setup()).wait(); }

    /// Presses Ctrl-C when each thread has begun a file, and waits for the end.
    void backUpUntilCtrlC()
    {
        const NewFiles temporaryFiles(served("photos"));
        Process process(setup());
        temporaryFiles.waitFor(kThreads);
        process.signal(SIGINT);
        EXPECT_EQ(130, process.wait());
    }

    /// The last progress that it shows, and its other output.
    std::string lastShown() const
    {
        const std::string shown = contentOf(folder.file("err"));
        return shown.substr(shown.rfind('\r') + 1);
    }

    Tree arrived() const { return treeIn(served("photos")); }
};

} // namespace

TEST_F(BackupHost, SendsAllFilesOverOneConnectionPerThread)
{
    for (int i = 0; i < 20; ++i) {
        add(std::to_string(i) + ".bak", std::string(1000, static_cast<char>('a' + i)));
    }
    add("the sea/one & only.bak", "deep");
    add("the sea/far/100%20 #1?.bak", "deeper");
    add("empty.bak", "");
    // Each session's first file waits for the others.
    misbehave("STOR#1=meet:" + std::to_string(kThreads));
    serve();
    EXPECT_EQ(0, backUp()) << contentOf(folder.file("err"));
    EXPECT_EQ("20010 of 20010 bytes\n", lastShown());
    EXPECT_EQ("", contentOf(folder.file("out")));
    EXPECT_TRUE(sameTrees(treeIn(folder.file("photos")), arrived()));
    EXPECT_EQ(kThreads, static_cast<int>(sessions().size()));
}

TEST_F(BackupHost, ReportsAFailedFileAndSendsTheOthers)
{
    add("a.bak", "one");
    add("b.bak", "two");
    add("c.bak", "three");
    fs::create_directories(served("photos/b.bak/in the way"));
    serve();
    EXPECT_EQ(1, backUp());
    const std::string said = contentOf(folder.file("err"));
    const std::string complaint = "\nbackup-host: " + folder.file("photos/b.bak") + ": 21 Quote command returned error";
    EXPECT_NE(std::string::npos, said.find(complaint)) << said;
    EXPECT_TRUE(
        sameTrees({{"a.bak", "one"}, {"b.bak/", ""}, {"b.bak/in the way/", ""}, {"c.bak", "three"}}, arrived()));
}

// One directory cannot be listed, and of the other's files only the names can be read.
TEST_F(BackupHost, ReportsWhatCannotBeReadAndSendsTheOthers)
{
    add("a.bak", "one");
    add("lost+found/b.bak", "two");
    add("names/c.bak", "three");
    serve();
    fs::permissions(folder.file("photos/lost+found"), fs::perms::none);
    fs::permissions(folder.file("photos/names"), fs::perms::owner_read);
    const ProgramResult result = runProgram(heedingModes(setup()));
    fs::permissions(folder.file("photos/lost+found"), fs::perms::owner_all);
    fs::permissions(folder.file("photos/names"), fs::perms::owner_all);
    EXPECT_TRUE(exited(1, result));
    const std::string said = "\n" + result.err;
    for (const std::string unread : {"photos/lost+found", "photos/names/c.bak"}) {
        const std::string complaint = "\nbackup-host: " + folder.file(unread) + ": Permission denied\n";
        EXPECT_NE(std::string::npos, said.find(complaint)) << said;
    }
    EXPECT_EQ("3 of 3 bytes\n", result.err.substr(result.err.rfind('\r') + 1));
    EXPECT_TRUE(sameTrees({{"a.bak", "one"}}, arrived()));
}

TEST_F(BackupHost, SendsATerminalNoControlCharactersFromAFilesName)
{
    add("\x1b]0;title\a.bak", "one");
    serve();
    EXPECT_EQ(1, backUp());
    const std::string said = contentOf(folder.file("err"));
    const std::string complaint = "\nbackup-host: " + folder.file("photos/\\x1b]0;title\\x07.bak") + ": 43 ";
    EXPECT_NE(std::string::npos, said.find(complaint)) << said;
}

TEST_F(BackupHost, CtrlCEndsItAndLeavesNoTemporaryFile)
{
    for (int i = 0; i < 2 * kThreads; ++i) {
        addLarge(std::to_string(i) + ".bak");
    }
    fs::create_directory(served("photos"));
    writeFile(served("photos/.other.bak.0123456789ab.part"), "another's");
    for (int i = 1; i <= kThreads; ++i) {
        misbehave(std::to_string(i) + "/DATA=stall-after:1000");
    }
    serve();
    backUpUntilCtrlC();
    EXPECT_TRUE(sameTrees({{".other.bak.0123456789ab.part", "another's"}}, arrived()));
    const std::string ending = "\nbackup-host: interrupted\n";
    const std::string said = contentOf(folder.file("err"));
    ASSERT_LT(ending.size(), said.size());
    EXPECT_EQ(ending, said.substr(said.size() - ending.size()));
}

TEST_F(BackupHost, SaysWhereTemporaryFilesMayRemain)
{
    for (int i = 0; i < kThreads; ++i) {
        addLarge(std::to_string(i) + ".bak");
        misbehave(std::to_string(i + 1) + "/DATA=stall-after:1000");
    }
    fs::create_directory(served("photos"));
    misbehave("DELE=reply:550 not allowed");
    serve();
    backUpUntilCtrlC();
    EXPECT_EQ(4U, arrived().size());
    const std::string said = contentOf(folder.file("err"));
    EXPECT_NE(std::string::npos, said.find("\nbackup-host: temporary files may remain in ftp://localhost:" +
                                           std::to_string(server->port()) + "/photos/: 21 "))
        << said;
}

TEST_F(BackupHost, PrintsItsUsage)
{
    ProcessSetup bare{{BACKUP_HOST}};
    bare.err = folder.write("err", "");
    EXPECT_EQ(2, Process(bare).wait());
    EXPECT_EQ("usage: HOST_PASSWORD=... backup-host INI-FILE CA-FILE FOLDER URL\n", contentOf(bare.err));
}
