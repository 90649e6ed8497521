#ifndef SFTPCLIENT_CLI_TREE_TREERUN_H
#define SFTPCLIENT_CLI_TREE_TREERUN_H

#include "base/Arguments.h"
#include "tree/Attempts.h"
#include "tree/Board.h"
#include "tree/Direction.h"
#include "tree/TreeResult.h"

#include <SFtpSession.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

/// One push or pull: lists both trees, plans, makes directories, moves files and last deletes.
class TreeRun
{
public:
    /// `show` is called ten times a second while files move, on the thread of `run`. All are used as long as the object
    /// lives.
    TreeRun(const Arguments& arguments, SFtpSession& session, RemoteTree& remote, Board& board,
            std::function<void()> show);

    /// REQUIRES: an `Interruption`.
    TreeResult run();

private:
    using Removal = void (Destination::*)(const std::string& path);

    Destination& destination() { return m_isPush ? static_cast<Destination&>(m_remote) : *m_local; }
    void runPhases();
    TreeListing listLocal();
    TreeListing listRemote();
    void refuseToEmpty() const;
    bool makeDirectories(const Plan& plan);
    void moveFiles(const Plan& plan);
    void moveFile(const Move& move);
    void leaveOutUnmoved(Plan& plan) const;
    std::set<std::string> failedPaths() const;
    void requireNames(const std::vector<std::string>& doubtful);
    void removeAll(const Plan& plan);
    void remove(const std::vector<std::string>& paths, Removal removal);
    void removeLeftovers();
    void note(TreeStep step, const std::string& path, std::uint64_t& count);
    void conclude();

    const Arguments& m_arguments;
    RemoteTree& m_remote;
    Board& m_board;
    const bool m_isPush;
    Exclusions m_exclusions;
    Attempts m_attempts;
    TreeListing m_source;
    TreeListing m_destination;
    std::optional<LocalTree> m_local;
    std::unique_ptr<Direction> m_direction;
    bool m_mayDelete = false;
    std::mutex m_mutex; // for what follows
    TreeResult m_result;
    std::set<std::string> m_same; // compared, not moved
};

#endif
