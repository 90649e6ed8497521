#ifndef EXAMPLES_BACKUPAGENT_H
#define EXAMPLES_BACKUPAGENT_H

#include "NotifySocket.h"
#include "support/Process.h"
#include "support/ServerFixture.h"
#include "support/TreeFiles.h"

#include <filesystem>
#include <regex>
#include <string>

/// The example that runs as a service. The test is its service manager: it gives the credentials, hears how the service
/// is, and sends the signals.
class BackupAgent : public ServerFixture
{
protected:
    BackupAgent()
    {
        config.tlsRequiredAtLogin = true;
        config.tlsReuseRequired = true;
        std::filesystem::create_directory(folder.file("photos"));
        std::filesystem::create_directory(folder.file("credentials"));
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
        const std::filesystem::path path = folder.file("photos/" + name);
        std::filesystem::create_directories(path.parent_path());
        std::filesystem::rename(folder.write("new", content), path);
    }

    /// More than fits between the client and a server that does not read.
    void addLarge(const std::string& name) const
    {
        add(name, "");
        std::filesystem::resize_file(folder.file("photos/" + name), 64 << 20);
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

#endif
