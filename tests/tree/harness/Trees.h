#ifndef TREE_HARNESS_TREES_H
#define TREE_HARNESS_TREES_H

#include "harness/Served.h"

#include <ctime>
#include <map>
#include <string>
#include <vector>

/// What is in a folder, by paths: the content of a file, "-> TARGET" for a link, and "" under "NAME/" for a folder.
using Tree = std::map<std::string, std::string>;

Tree treeIn(const std::string& folder);

/// Writes these files and folders.
void plant(const std::string& folder, const Tree& tree);

/// In seconds since 1970.
std::time_t modified(const std::string& path);
void setModified(const std::string& path, std::time_t time);

/// The same for all files of a tree, by their paths.
std::map<std::string, std::time_t> timesIn(const std::string& folder);

/// For EXPECT_TRUE: the same paths with the same contents. A failure names those that differ.
testing::AssertionResult sameTrees(const Tree& expected, const Tree& actual);

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
