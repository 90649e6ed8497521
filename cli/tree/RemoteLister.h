#ifndef SFTPCLIENT_CLI_TREE_REMOTELISTER_H
#define SFTPCLIENT_CLI_TREE_REMOTELISTER_H

#include "tree/Attempts.h"
#include "tree/Names.h"
#include "tree/RemoteTree.h"
#include "tree/TreeListing.h"

#include <mutex>
#include <string>
#include <vector>

/// Lists a tree on the server, several directories at a time.
class RemoteLister
{
public:
    /// `wanted`: what is below a directory that is not in it stays unknown; null for everything. All are used as long
    /// as the object lives.
    RemoteLister(RemoteTree& remote, const Exclusions& exclusions, Attempts& attempts, const TreeListing* wanted);

    /// What cannot be listed is among the attempts' failures.
    TreeListing list();

private:
    void listDirectory(const std::string& path);
    void take(const std::string& path, const std::vector<RemoteEntry>& entries);
    std::vector<std::string> directoriesIn(const std::string& path, const std::vector<RemoteEntry>& entries);

    RemoteTree& m_remote;
    const Exclusions& m_exclusions;
    Attempts& m_attempts;
    const TreeListing* m_wanted;
    Workers m_workers;
    std::mutex m_mutex; // for what follows
    TreeListing m_listing;
};

#endif
