#ifndef SFTPCLIENT_CLI_TREE_DIRECTION_H
#define SFTPCLIENT_CLI_TREE_DIRECTION_H

#include "tree/Checksum.h"
#include "tree/LocalTree.h"
#include "tree/Plan.h"
#include "tree/RemoteTree.h"

#include <memory>
#include <optional>
#include <string>

/// Which way files go, and what that means for one path. Each function throws `TreeFailure`. Any number of threads may
/// call at the same time.
class Direction
{
public:
    Direction(LocalTree& local, RemoteTree& remote) : m_local(local), m_remote(remote) {}
    virtual ~Direction() = default;

    virtual void move(const Move& move) = 0;
    /// The answer to the question of `move`: whether there is nothing to be moved. `mayChange`: it may set the
    /// destination's time where all else is the same.
    bool isSame(const Move& move, bool mayChange, const IsEnding& isEnding);

protected:
    LocalTree& local() const { return m_local; }
    RemoteTree& remote() const { return m_remote; }

private:
    /// The local file's time, and what the listing says of the server's file.
    virtual FileTime timeHere(const Move& move) const = 0;
    virtual const TreeEntry& entryThere(const Move& move) const = 0;
    /// Gives the destination the source's time.
    virtual void adoptTime(const std::string& path, FileTime here, FileTime there) = 0;
    /// Whether times that differ are those of the same file.
    virtual bool isNewEnough(const Move& move, FileTime there) = 0;

    std::optional<FileTime> timeThere(const Move& move) const;
    bool holdsSame(const std::string& path, const IsEnding& isEnding) const;

    LocalTree& m_local;
    RemoteTree& m_remote;
};

/// Both trees are used as long as the object lives.
std::unique_ptr<Direction> makePush(LocalTree& local, RemoteTree& remote);
/// `salt`: see `arrivingName`.
std::unique_ptr<Direction> makePull(LocalTree& local, RemoteTree& remote, const std::string& salt);

#endif
