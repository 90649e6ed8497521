#include "tree/RemoteLister.h"

#include <curl/curl.h>

#include <optional>
#include <utility>

RemoteLister::RemoteLister(RemoteTree& remote, const Exclusions& exclusions, Attempts& attempts,
                           const TreeListing* wanted)
    : m_remote(remote), m_exclusions(exclusions), m_attempts(attempts), m_wanted(wanted), m_workers(attempts.workers())
{
}

TreeListing RemoteLister::list()
{
    listDirectory("");
    m_workers.run();
    return std::move(m_listing);
}

void RemoteLister::listDirectory(const std::string& path)
{
    m_workers.add([this, path] {
        return m_attempts.attempt(path, [&] {
            const std::optional<std::vector<RemoteEntry>> entries = m_remote.list(path);
            if (entries) {
                take(path, *entries);
            } else if (path.empty()) {
                m_listing.isMissing = true;
            } else {
                throw TreeFailure(CURLE_REMOTE_FILE_NOT_FOUND, "the directory cannot be listed");
            }
        });
    });
}

void RemoteLister::take(const std::string& path, const std::vector<RemoteEntry>& entries)
{
    if (depthOf(path) > kDeepest) {
        throw TreeFailure(CURLE_WEIRD_SERVER_REPLY,
                          "more directories within each other than " + std::to_string(kDeepest));
    }
    for (const std::string& each : directoriesIn(path, entries)) {
        listDirectory(each);
    }
}

std::vector<std::string> RemoteLister::directoriesIn(const std::string& path, const std::vector<RemoteEntry>& entries)
{
    std::vector<std::string> found;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const RemoteEntry& each : entries) {
        const std::string here = pathIn(path, each.name);
        const bool isWanted =
            !holdsControlByte(each.name) && (m_wanted == nullptr || m_wanted->entries.count(here) > 0);
        if (isPlainName(each.name) &&
            addTo(m_listing, path, each.name, {each.kind, each.size, each.modified}, m_exclusions) && isWanted) {
            found.push_back(here);
        }
    }
    return found;
}
