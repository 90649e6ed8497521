#include "support/TreeFiles.h"

#include "support/Lines.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>

namespace fs = std::filesystem;

Tree treeIn(const std::string& folder)
{
    Tree tree;
    for (const fs::directory_entry& each : fs::recursive_directory_iterator(folder)) {
        const std::string path = each.path().lexically_relative(folder).string();
        if (each.is_symlink()) {
            tree[path] = "-> " + fs::read_symlink(each.path()).string();
        } else if (each.is_directory()) {
            tree[path + "/"] = "";
        } else {
            tree[path] = contentOf(each.path().string());
        }
    }
    return tree;
}

void plant(const std::string& folder, const Tree& tree)
{
    fs::create_directories(folder);
    for (const auto& [path, content] : tree) {
        const fs::path whole = folder + "/" + path;
        if (path.back() == '/') {
            fs::create_directories(whole);
        } else {
            fs::create_directories(whole.parent_path());
            writeFile(whole.string(), content);
        }
    }
}

std::time_t modified(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mtim.tv_sec : -1;
}

void setModified(const std::string& path, std::time_t time)
{
    const std::array<timespec, 2> times = {{{0, UTIME_OMIT}, {time, 0}}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW)) << path;
}

std::map<std::string, std::time_t> timesIn(const std::string& folder)
{
    std::map<std::string, std::time_t> times;
    for (const auto& [path, content] : treeIn(folder)) {
        if (path.back() != '/') {
            times[path] = modified(folder + "/" + path);
        }
    }
    return times;
}

testing::AssertionResult sameTrees(const Tree& expected, const Tree& actual)
{
    Lines differing;
    for (const auto& [path, content] : expected) {
        const auto found = actual.find(path);
        if (found == actual.end() || found->second != content) {
            differing.push_back((found == actual.end() ? "missing: " : "different: ") + path);
        }
    }
    for (const auto& [path, content] : actual) {
        if (expected.count(path) == 0) {
            differing.push_back("besides: " + path);
        }
    }
    testing::AssertionResult result = differing.empty() ? testing::AssertionSuccess() : testing::AssertionFailure();
    for (const std::string& each : differing) {
        result << each << "\n";
    }
    return result;
}
