#ifndef SFTPCLIENT_CLI_TREE_ATTEMPTS_H
#define SFTPCLIENT_CLI_TREE_ATTEMPTS_H

#include "base/Arguments.h"
#include "tree/TreeListing.h"
#include "tree/Workers.h"

#include <SFtpSession.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// Takes steps over several connections, each again where it failed for a moment, and keeps what failed. It ends where
/// a signal came or the time is over, and after the first failure unless the arguments say to keep going.
class Attempts
{
public:
    using Step = std::function<void()>;

    /// `show` is called ten times a second while steps are taken, on the thread that waits for them. All are used as
    /// long as the object lives.
    Attempts(const Arguments& arguments, SFtpSession& session, std::function<void()> show);

    /// One step for each path.
    void inParallel(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& step);

    /// For what is not known by paths alone: the threads, whose tasks are attempts.
    Workers workers() { return workers(m_arguments.tree.jobs); }
    Workers::Verdict attempt(const std::string& path, const Step& step);

    void fail(const std::string& path, const TreeFailure& failure);

    bool mayGoOn() const { return !isEnding() && (m_failed.empty() || m_arguments.tree.keepsGoing); }
    bool isEnding() const;

    /// Whether --max-time is over.
    bool isLate() const { return m_isLate; }
    double seconds() const;

    /// REQUIRES: no step is being taken.
    const std::vector<FailedPath>& failed() const { return m_failed; }

private:
    Workers workers(unsigned count);
    void tryAgainAndAgain(const Step& step);
    bool takeConnectionAway();
    void tick();

    const Arguments& m_arguments;
    SFtpSession& m_session;
    const std::function<void()> m_show;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::atomic<bool> m_isLate{false};
    std::atomic<unsigned> m_connections; // changed under the lock alone
    std::mutex m_mutex;                  // for what follows
    std::vector<FailedPath> m_failed;
};

#endif
