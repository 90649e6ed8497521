#include "Storage.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>

namespace testserver {

namespace fs = std::filesystem;

Storage::Storage(const fs::path& root, bool ignoresCase) : m_root(fs::canonical(root)), m_ignoresCase(ignoresCase) {}

std::string Storage::absolute(const std::string& cwd, const std::string& argument)
{
    // In an absolute path, ".." of the root is the root.
    std::string path = (fs::path(cwd) / argument).lexically_normal().string();
    if (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

fs::path Storage::located(const std::string& absolute) const
{
    const fs::path below = fs::path(absolute).relative_path();
    if (!m_ignoresCase) {
        return m_root / below;
    }
    fs::path found = m_root;
    for (const fs::path& name : below) {
        std::error_code failed;
        fs::directory_iterator entry(found, failed);
        const fs::directory_iterator end;
        while (!failed && entry != end && !boost::iequals(entry->path().filename().string(), name.string())) {
            entry.increment(failed);
        }
        found /= failed || entry == end ? name : entry->path().filename();
    }
    return found;
}

std::optional<fs::path> Storage::real(const std::string& absolute) const
{
    if (absolute.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    std::error_code failed;
    fs::path path = fs::weakly_canonical(located(absolute), failed);
    if (failed) {
        return std::nullopt;
    }
    if (path.filename().empty()) {
        path = path.parent_path();
    }
    // A dangling link exists, and writing to it would create its target.
    if (fs::is_symlink(path, failed)) {
        return std::nullopt;
    }
    const auto [end, unused] = std::mismatch(m_root.begin(), m_root.end(), path.begin(), path.end());
    return end == m_root.end() ? std::optional(path) : std::nullopt;
}

bool Storage::isDirectory(const std::string& absolute) const
{
    std::error_code failed;
    const auto path = real(absolute);
    return path && fs::is_directory(*path, failed);
}

bool Storage::isLink(const std::string& absolute) const
{
    std::error_code failed;
    return fs::is_symlink(m_root / fs::path(absolute).relative_path(), failed);
}

bool Storage::isFile(const std::string& absolute) const
{
    std::error_code failed;
    const auto path = real(absolute);
    return path && fs::is_regular_file(*path, failed);
}

bool Storage::isWritable(const std::string& absolute) const
{
    std::error_code failed;
    const auto path = real(absolute);
    return path && (!fs::exists(*path, failed) || fs::is_regular_file(*path, failed)) &&
           fs::is_directory(path->parent_path(), failed);
}

std::uint64_t Storage::size(const std::string& absolute) const
{
    std::error_code failed;
    const auto path = real(absolute);
    const std::uint64_t bytes = path ? fs::file_size(*path, failed) : 0;
    return failed ? 0 : bytes;
}

std::vector<std::string> Storage::names(const std::string& absolute) const
{
    std::vector<std::string> found;
    const auto path = real(absolute);
    if (!path) {
        return found;
    }
    std::error_code failed;
    for (fs::directory_iterator entry(*path, failed), end; !failed && entry != end; entry.increment(failed)) {
        found.push_back(entry->path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace testserver
