#ifndef SESSION_CONTRACT_RECORDEDDISK_H
#define SESSION_CONTRACT_RECORDEDDISK_H

#include <filesystem>
#include <map>
#include <string>

/// The calls that decide what becomes of a local file, noted while the memory is watched: fsync, which does nothing
/// else, rename and unlink; and write, read, eventfd and close of a file, which only fail where told.
namespace recorded {

struct Disk
{
    /// The errno of a call that fails, by its name: the first one of that name, and again as long as it is here.
    std::map<std::string, int> failing;
    /// How many bytes one write takes at most; 0: all.
    std::size_t mostAtOnce = 0;
    /// So many reads and writes are interrupted first.
    unsigned interruptions = 0;
    /// What fsync was last called for.
    std::filesystem::path synced;
};

Disk& disk();

} // namespace recorded

#endif
