#ifndef SFTPCLIENT_CLI_TREE_TREERUN_H
#define SFTPCLIENT_CLI_TREE_TREERUN_H

#include "base/Arguments.h"
#include "tree/Board.h"
#include "tree/Direction.h"
#include "tree/TreeResult.h"
#include "tree/Workers.h"

#include <SFtpSession.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
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
    using Step = std::function<void()>;

    void runPhases();
    void listRemote(TreeListing& listing, const TreeListing* wanted);
    void listRemoteDirectory(Workers& workers, TreeListing& listing, const TreeListing* wanted,
                             const std::string& path);
    void takeEntries(Workers& workers, TreeListing& listing, const TreeListing* wanted, const std::string& path,
                     const std::vector<RemoteEntry>& entries);
    void listLocal(TreeListing& listing);
    void refuseToEmpty(const Plan& plan);
    bool makeDirectories(const Plan& plan);
    void moveFiles(const Plan& plan);
    void moveFile(const Move& move);
    void removeAll(const Plan& plan);
    void removeLeftovers();
    void clearLeftovers(const std::string& path);
    bool mayGoOn() const;

    void inParallel(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& work);
    Workers::Verdict attempt(const std::string& path, const Step& step);
    void tryAgainAndAgain(const Step& step);
    bool hasSpareConnection();
    bool takeConnectionAway();
    bool isEnding() const;
    void fail(const std::string& path, const TreeFailure& failure);
    void note(TreeStep step, const std::string& path, std::uint64_t& count);
    void tick();
    void conclude();
    Workers workers(unsigned count);

    const Arguments& m_arguments;
    SFtpSession& m_session;
    RemoteTree& m_remote;
    Board& m_board;
    std::function<void()> m_show;
    const bool m_isPush;
    Exclusions m_exclusions;
    TreeListing m_source;
    TreeListing m_destination;
    std::unique_ptr<Direction> m_direction;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::atomic<bool> m_isLate{false}; // --max-time is over
    bool m_mayDelete = false;
    std::mutex m_mutex; // for what follows
    unsigned m_connections;
    TreeResult m_result;
};

#endif
