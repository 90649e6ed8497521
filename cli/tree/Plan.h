#ifndef SFTPCLIENT_CLI_TREE_PLAN_H
#define SFTPCLIENT_CLI_TREE_PLAN_H

#include "tree/TreeListing.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

/// What a pair of files still leaves open.
enum class Question
{
    None,     ///< they differ
    Time,     ///< the sizes are the same; the listing has no time of the one on the server
    Newer,    ///< the one at the destination is newer: it is the same only where the destination keeps no times
    Checksum, ///< the sizes are the same, and contents are to be compared
};

/// A file that is to be moved, unless the answer says otherwise.
struct Move
{
    std::string path;
    TreeEntry from;
    std::optional<TreeEntry> to; ///< what is there
    Question question = Question::None;
};

/// What makes the destination equal to the source.
struct Plan
{
    std::vector<std::string> directories; ///< to be made; each behind the one that it is in
    std::vector<Move> moves;
    std::vector<std::string> files;   ///< to be deleted
    std::vector<std::string> folders; ///< to be deleted; each behind what is in it
    std::set<std::string> blocked;    ///< something of another kind has the name at the destination
    std::vector<FailedPath> refused;  ///< no session takes their names
    std::uint64_t unchanged = 0;
};

struct PlanRules
{
    bool isPush = false;
    bool checksums = false;                ///< compare contents where the sizes are the same
    bool deletes = false;                  ///< what is not in the source
    std::vector<FailedPath> unlisted = {}; ///< directories; what is in them may be the same, and is left alone
};

/// A server tells times in whole seconds, and some round them to even ones.
bool areSameTimes(FileTime one, FileTime other);

/// The paths that some servers and disks take for others: of those that the plan makes or deletes, and of those of the
/// source beside them, which differ in the case of letters alone; and those that it makes with a blank or a dot at the
/// end of a name.
std::vector<std::string> doubtfulIn(const Plan& plan, const TreeListing& source);

/// Which of these paths a listing lacks, but for names that the server may hide.
std::vector<std::string> missingIn(const TreeListing& listing, const std::vector<std::string>& paths);

Plan planOf(const TreeListing& source, const TreeListing& destination, const PlanRules& rules);

#endif
