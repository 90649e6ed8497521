#ifndef TREE_HARNESS_TREES_H
#define TREE_HARNESS_TREES_H

#include "harness/Served.h"
#include "support/TreeFiles.h"

#include <string>
#include <vector>

/// The base of the tests that run push and pull, against a server whose files have times of their own. The local tree
/// is "here", the one on the server "there".
class Trees : public Served
{
protected:
    Trees();

    ProgramResult push(Words more = {}) const;
    ProgramResult pull(Words more = {}) const;

    std::string here(const std::string& name = {}) const { return local("here" + (name.empty() ? "" : "/" + name)); }
    std::string there(const std::string& name = {}) const { return served("there" + (name.empty() ? "" : "/" + name)); }

    /// The commands of all sessions so far, in order: "STOR a", of those that begin with one of these words.
    Lines commands(const std::vector<std::string>& verbs);
};

#endif
