// Whole trees to and from Debian's file servers.
#include "RealServer.h"

#include "support/TreeFiles.h"

#include "support/Process.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>

namespace {

class ServedTrees : public RealServer
{
protected:
    // The result's line. The SSH server's key is known by its file.
    std::string lineOf(Words words)
    {
        aimAt(aim);
        std::replace(words.begin(), words.end(), std::string("URL"), request.remotePath);
        words.insert(words.begin(), SFTPCLIENT_COMMAND);
        words.insert(words.end(), {"--user", request.userName, "--ca", folder.file("ca.pem"), "--jobs", "3"});
        if (server.scheme == "sftp") {
            const std::string key = contentOf(local("daemon/host_key.pub"));
            writeFile(local("known_hosts"), "[localhost]:" + std::to_string(request.port) + " " + key);
            words.insert(words.end(), {"--known-hosts", local("known_hosts")});
        }
        ProcessSetup setup;
        setup.words = words;
        setup.environment = {{"SFTPCLIENT_PASSWORD", request.password}};
        setup.folder = local("");
        return lastLine(runProgram(setup).err);
    }

    std::string aim = "trees/new/"; // among the user's files
};

const Tree kTree = {{"a b.txt", "blanks"}, {"empty", ""},     {"nothing/", ""},
                    {"sub/", ""},          {"sub/deep/", ""}, {"sub/deep/x.bin", std::string(70000, 'x')},
                    {"sub/y", "yy"}};

} // namespace

TEST_P(ServedTrees, ArePushedAndPulledAndThenUnchanged)
{
    writeFile(folder.file("ca.pem"), authority.certificatePem());
    keep("trees/x", "");
    plant(local("here"), kTree);
    for (const auto& [path, unused] : timesIn(local("here"))) {
        setModified(local("here/" + path), 1700000000);
    }
    EXPECT_EQ("push: 0 No error: 4 moved (68.4 KiB), 0 unchanged", lineOf({"push", "here", "URL"}));
    EXPECT_TRUE(sameTrees(kTree, treeIn(served("trees/new"))));
    EXPECT_EQ("push: 0 No error: 0 moved (0 B), 4 unchanged", lineOf({"push", "here", "URL"}));
    std::filesystem::create_symlink(".", served("trees/new/loop"));
    EXPECT_EQ("pull: 0 No error: 4 moved (68.4 KiB), 0 unchanged, 1 skipped", lineOf({"pull", "URL", "back"}));
    std::filesystem::remove(served("trees/new/loop"));
    EXPECT_TRUE(sameTrees(kTree, treeIn(local("back"))));
    EXPECT_EQ(timesIn(served("trees/new")), timesIn(local("back")));
    const bool keepsTimes = server.package != "vsftpd";
    const bool hidesDotNames = server.package == "vsftpd";
    EXPECT_EQ(keepsTimes, timesIn(local("here")) == timesIn(local("back")));
    EXPECT_EQ("pull: 0 No error: 0 moved (0 B), 4 unchanged", lineOf({"pull", "URL", "back"}));
    std::filesystem::remove_all(local("here/sub"));
    EXPECT_EQ("push: 0 No error: 0 moved (0 B), 4 deleted, 2 unchanged", lineOf({"push", "here", "URL", "--delete"}));
    EXPECT_TRUE(sameTrees({{"a b.txt", "blanks"}, {"empty", ""}, {"nothing/", ""}}, treeIn(served("trees/new"))));
    for (const std::string& tree : {served("trees/new"), local("back")}) {
        writeFile(tree + "/.both", "");
        setModified(tree + "/.both", 1700000000);
    }
    EXPECT_EQ("pull: 0 No error: 0 moved (0 B), 4 deleted, " + std::string(hidesDotNames ? "2" : "3") + " unchanged",
              lineOf({"pull", "URL", "back", "--delete"}));
    EXPECT_TRUE(std::filesystem::exists(local("back/.both")));
}

// SSH knows no time before 1970.
TEST_P(ServedTrees, AFileOlderThanTimesGetsNoOtherTime)
{
    writeFile(folder.file("ca.pem"), authority.certificatePem());
    keep("trees/x", "");
    plant(local("here"), {{"old", "1"}});
    setModified(local("here/old"), -86400);
    EXPECT_EQ("push: 0 No error: 1 moved (1 B), 0 unchanged", lineOf({"push", "here", "URL"}));
    EXPECT_LE(modified(served("trees/new/old")), std::time(nullptr));
}

// Pure-FTPd puts "_" in place of the blank.
TEST_P(ServedTrees, AFileThatGetsAnotherNameIsAFailure)
{
    writeFile(folder.file("ca.pem"), authority.certificatePem());
    keep("trees/x", "");
    plant(local("here"), {{" x", "1"}, {"y", "2"}});
    EXPECT_EQ(server.package == "pure-ftpd"
                  ? "push: 25  x: the destination has another name in place of this one: 2 moved (2 B), 0 unchanged, "
                    "1 failed"
                  : "push: 0 No error: 2 moved (2 B), 0 unchanged",
              lineOf({"push", "here", "URL"}));
}

// No server may take it for the login's directory, in which all that the local one does not have would then be deleted.
TEST_P(ServedTrees, ADirectoryNamedTildeIsNotTheLoginsDirectory)
{
    writeFile(folder.file("ca.pem"), authority.certificatePem());
    keep("kept", "1");
    plant(local("here"), {{"~/x", "1"}, {"kept", "1"}, {"below/~/x", "1"}});
    aim = "";
    const auto expectPush = [this](const std::string& expected) {
        EXPECT_EQ(expected, lineOf({"push", "here", "URL", "--delete"}).substr(0, expected.size()));
        EXPECT_TRUE(sameTrees(treeIn(local("here")), treeIn(served(""))));
    };
    expectPush("push: 0 No error: 2 moved (2 B), 1 unchanged");
    expectPush("push: 0 No error: 0 moved (0 B), 3 unchanged");
    std::filesystem::remove_all(local("here/~"));
    std::filesystem::remove_all(local("here/below/~"));
    expectPush("push: 0 No error: 0 moved (0 B), 4 deleted, 1 unchanged");
}

namespace {

std::vector<Server> oneOfEachKind()
{
    const std::set<std::string> ids = {"VsftpdTlsAtLogin", "ProftpdTlsAtLogin", "PureFtpdTlsAtLogin", "ProftpdSftp",
                                       "OpensshSftp"};
    std::vector<Server> those;
    std::copy_if(servers().begin(), servers().end(), std::back_inserter(those),
                 [&ids](const Server& each) { return ids.count(each.id) > 0; });
    return those;
}

INSTANTIATE_TEST_SUITE_P(OfDebian, ServedTrees, testing::ValuesIn(oneOfEachKind()), idOf);

} // namespace
