#ifndef SFTPCLIENT_CLI_TREE_TREERESULT_H
#define SFTPCLIENT_CLI_TREE_TREERESULT_H

#include "base/Result.h"
#include "tree/TreeListing.h"

#include <cstdint>
#include <string>
#include <vector>

enum class TreeStep
{
    MakeDirectory,
    Move,
    Delete
};

/// "mkdir", "move" or "delete".
const char* nameOfStep(TreeStep step);

/// What would be done with one path.
struct TreeAction
{
    TreeStep step = TreeStep::Move;
    std::string path;
};

/// How a push or a pull went.
struct TreeResult : Result
{
    bool isDryRun = false;
    std::uint64_t made = 0; // directories
    std::uint64_t moved = 0;
    std::uint64_t deleted = 0;
    std::uint64_t unchanged = 0;
    std::vector<TreeAction> actions; // of a dry run
    std::vector<std::string> skipped;
    std::vector<FailedPath> failed;
};

/// What to do about the first failure; empty where nothing can be said in general.
std::string hintOf(const TreeResult& result);

/// A text about a path, for one line of a terminal. A session has already escaped the control bytes of a server's
/// reply: the backslashes that mark them are not escaped again.
std::string shownText(const std::string& text);

/// "push: 0 No error: 3 moved (1.2 MiB), 1 deleted, 17 unchanged".
std::string lineOf(const TreeResult& result);

/// One JSON object on one line, in ASCII. Bytes that are not UTF-8 are replaced by U+FFFD; a path with such bytes is
/// also there percent-encoded.
std::string jsonOf(const TreeResult& result);

#endif
