#ifndef SFTPCLIENT_CLI_TREE_DIRECTION_H
#define SFTPCLIENT_CLI_TREE_DIRECTION_H

#include "tree/LocalTree.h"
#include "tree/Plan.h"
#include "tree/RemoteTree.h"

#include <memory>
#include <string>

/// Which way files go, and what that means for one path. Each function throws `TreeFailure`. Any number of threads may
/// call at the same time.
class Direction
{
public:
    virtual ~Direction() = default;

    /// Of "": the destination itself, and what is missing above it.
    virtual void makeDirectory(const std::string& path) = 0;
    virtual void move(const Move& move) = 0;
    virtual void removeFile(const std::string& path) = 0;
    virtual void removeDirectory(const std::string& path) = 0;
    /// The answer to the question of `move`: whether there is nothing to be moved. `mayChange`: it may set the
    /// destination's time where all else is the same.
    virtual bool isSame(const Move& move, bool mayChange) = 0;
    /// The code for a file whose place something else has taken.
    virtual int codeOfBlocked() const = 0;
};

/// The remote tree is used as long as the object lives. A local tree that is missing must be made before anything else
/// is done. Both throw `TreeFailure` where it cannot be read.
std::unique_ptr<Direction> makePush(const std::string& root, RemoteTree& remote);
/// `salt`: see `arrivingName`.
std::unique_ptr<Direction> makePull(const std::string& root, RemoteTree& remote, const std::string& salt);

#endif
