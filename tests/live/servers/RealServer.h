#ifndef SERVERS_REALSERVER_H
#define SERVERS_REALSERVER_H

#include "Inetd.h"
#include "Server.h"
#include "support/Live.h"

#include <iosfwd>
#include <memory>
#include <string>

/// For the tests' names in ctest.
void PrintTo(const Server& server, std::ostream* stream);

/// Names a test after its server.
std::string idOf(const testing::TestParamInfo<Server>& of);

/// The base of every test against a daemon: the daemon, ready for connections, and files of the user who logs in.
/// Fails if the daemon cannot run, unless the user has switched it off.
class RealServer : public Live, public testing::WithParamInterface<Server>
{
protected:
    void SetUp() override;
    ~RealServer() override;

    /// A file of the user who logs in, in a folder of theirs.
    void keep(const std::string& name, const std::string& content) const;

    /// Aims the request at this path among the user's files.
    void aimAt(const std::string& path);

    /// How many control connections there have been.
    unsigned connections() const { return m_daemon->connections(); }

    const Server server = GetParam();
    /// Whether to allow TLS 1.3 where the daemon is otherwise limited to 1.2 for the core's uploads.
    bool speaksNewestTls = false;

private:
    void requireRunnable() const;
    void start();
    void makeHostKey() const;
    std::string daemonFile(const std::string& name) const { return local("daemon/" + name); }

    std::unique_ptr<Inetd> m_daemon;
};

#endif
