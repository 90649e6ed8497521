#include "tree/TreeRun.h"

#include "operation/Interruption.h"
#include "tree/RemoteLister.h"

#include <boost/algorithm/string/predicate.hpp>
#include <curl/curl.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace {

bool holdsFile(const TreeListing& listing)
{
    return std::any_of(listing.entries.begin(), listing.entries.end(),
                       [](const auto& each) { return each.second.kind == EntryKind::File; });
}

std::map<std::size_t, std::vector<std::string>> byDepth(const std::vector<std::string>& paths)
{
    std::map<std::size_t, std::vector<std::string>> sorted;
    for (const std::string& path : paths) {
        sorted[depthOf(path)].push_back(path);
    }
    return sorted;
}

} // namespace

TreeRun::TreeRun(const Arguments& arguments, SFtpSession& session, RemoteTree& remote, Board& board,
                 std::function<void()> show)
    : m_arguments(arguments), m_remote(remote), m_board(board), m_isPush(arguments.operation == Operation::Push),
      m_exclusions(arguments.tree.excluded), m_attempts(arguments, session, std::move(show))
{
    m_result.operation = arguments.name;
    m_result.isDryRun = arguments.tree.dryRun;
}

TreeResult TreeRun::run()
{
    try {
        runPhases();
    } catch (const TreeFailure& failure) {
        m_attempts.fail("", failure);
    }
    conclude();
    return m_result;
}

void TreeRun::runPhases()
{
    TreeListing& local = m_isPush ? m_source : m_destination;
    TreeListing& remote = m_isPush ? m_destination : m_source;
    local = listLocal();
    if (!m_attempts.mayGoOn()) {
        return;
    }
    remote = listRemote();
    m_result.skipped = m_source.links;
    std::sort(m_result.skipped.begin(), m_result.skipped.end());
    if (!m_attempts.mayGoOn()) {
        return;
    }
    m_local.emplace(m_arguments.local, local.isMissing);
    m_direction = m_isPush ? makePush(*m_local, m_remote)
                           : makePull(*m_local, m_remote, m_arguments.resumes ? "" : std::to_string(getpid()));
    Plan plan = planOf(m_source, m_destination,
                       {m_isPush, m_arguments.tree.checksum, m_arguments.tree.deletes, m_attempts.failed()});
    m_result.unchanged = plan.unchanged;
    m_mayDelete = !plan.files.empty() || !plan.folders.empty();
    refuseToEmpty();
    for (const std::string& path : plan.blocked) {
        m_attempts.fail(path, {m_isPush ? CURLE_UPLOAD_FAILED : CURLE_WRITE_ERROR,
                               "something of another kind has this name at the destination"});
    }
    for (const FailedPath& each : plan.refused) {
        m_attempts.fail(each.path, {each.code, each.text});
    }
    if (!makeDirectories(plan)) {
        return;
    }
    moveFiles(plan);
    leaveOutUnmoved(plan);
    requireNames(doubtfulIn(plan, m_source));
    if (m_attempts.failed().empty() && !m_attempts.isEnding()) {
        removeLeftovers();
        m_mayDelete = false; // from here on, a failure does not mean that nothing was deleted
        removeAll(plan);
    }
}

TreeListing TreeRun::listLocal()
{
    TreeListing listing =
        LocalTree::list(m_arguments.local, m_exclusions, [this](const std::string& path, const TreeFailure& failure) {
            m_attempts.fail(path, failure);
        });
    if (m_isPush && listing.isMissing) {
        throw TreeFailure(CURLE_READ_ERROR, m_arguments.local + " is not there");
    }
    return listing;
}

TreeListing TreeRun::listRemote()
{
    // What the source lacks matters only where it is to be deleted.
    const TreeListing* const wanted = m_isPush && !m_arguments.tree.deletes ? &m_source : nullptr;
    TreeListing listing = RemoteLister(m_remote, m_exclusions, m_attempts, wanted).list();
    if (!m_isPush && listing.isMissing) {
        throw TreeFailure(CURLE_REMOTE_FILE_NOT_FOUND, "there is no such directory on the server");
    }
    return listing;
}

// An empty source is rather a disk that is not mounted than what is meant.
void TreeRun::refuseToEmpty() const
{
    if (m_mayDelete && !holdsFile(m_source) && !m_arguments.tree.forces) {
        throw TreeFailure(CURLE_FAILED_INIT,
                          "the source holds no file: --force says that --delete is meant all the same");
    }
}

// False where there is not even the destination itself.
bool TreeRun::makeDirectories(const Plan& plan)
{
    for (const auto& [depth, paths] : byDepth(plan.directories)) {
        if (m_attempts.mayGoOn()) {
            m_attempts.inParallel(paths, [this](const std::string& path) {
                if (!m_arguments.tree.dryRun) {
                    destination().makeDirectory(path);
                }
                note(TreeStep::MakeDirectory, path, m_result.made);
            });
        }
        if (m_result.made == 0 && m_destination.isMissing) {
            return false;
        }
    }
    return true;
}

void TreeRun::moveFiles(const Plan& plan)
{
    if (!m_attempts.mayGoOn()) {
        return;
    }
    std::int64_t bytes = 0;
    for (const Move& each : plan.moves) {
        bytes += std::max<std::int64_t>(each.from.size, 0);
    }
    m_board.start(plan.moves.size(), bytes);
    Workers all = m_attempts.workers();
    for (const Move& each : plan.moves) {
        all.add([this, &each] { return m_attempts.attempt(each.path, [this, &each] { moveFile(each); }); });
    }
    all.run();
}

void TreeRun::moveFile(const Move& move)
{
    const bool isDryRun = m_arguments.tree.dryRun;
    const bool isSame = move.question != Question::None &&
                        m_direction->isSame(move, !isDryRun, [this] { return m_attempts.isEnding(); });
    if (!isSame && !isDryRun) {
        m_board.begin(move.path, move.from.size);
        try {
            m_direction->move(move);
        } catch (...) {
            m_board.end(false);
            throw;
        }
        m_board.end(true);
    }
    if (!isSame) {
        note(TreeStep::Move, move.path, m_result.moved);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (isSame) {
        ++m_result.unchanged;
        m_same.insert(move.path);
    }
    m_result.bytes += isSame ? 0 : std::max<std::int64_t>(move.from.size, 0);
}

// Of a file that was not moved, the destination has no other name.
void TreeRun::leaveOutUnmoved(Plan& plan) const
{
    const std::set<std::string> failed = failedPaths();
    const auto isUnmoved = [&](const Move& each) { return m_same.count(each.path) + failed.count(each.path) > 0; };
    plan.moves.erase(std::remove_if(plan.moves.begin(), plan.moves.end(), isUnmoved), plan.moves.end());
}

std::set<std::string> TreeRun::failedPaths() const
{
    std::set<std::string> paths;
    for (const FailedPath& each : m_attempts.failed()) {
        paths.insert(each.path);
    }
    return paths;
}

// Otherwise a file would be lost without a word, or a new one deleted by its old name.
void TreeRun::requireNames(const std::vector<std::string>& doubtful)
{
    if (doubtful.empty() || m_arguments.tree.dryRun || !m_attempts.mayGoOn()) {
        return;
    }
    const std::set<std::string> failed = failedPaths();
    const std::size_t failures = m_attempts.failed().size();
    const TreeListing now = m_isPush ? listRemote() : listLocal();
    if (!m_attempts.mayGoOn() || m_attempts.failed().size() > failures) {
        return; // what is not listed may be there
    }
    for (const std::string& path : missingIn(now, doubtful)) {
        if (failed.count(path) == 0) {
            m_attempts.fail(path, {m_isPush ? CURLE_UPLOAD_FAILED : CURLE_WRITE_ERROR,
                                   "the destination has another name in place of this one"});
        }
    }
}

void TreeRun::removeAll(const Plan& plan)
{
    remove(plan.files, &Destination::removeFile);
    const auto folders = byDepth(plan.folders);
    for (auto each = folders.rbegin(); each != folders.rend() && m_attempts.mayGoOn(); ++each) {
        remove(each->second, &Destination::removeDirectory);
    }
}

void TreeRun::remove(const std::vector<std::string>& paths, Removal removal)
{
    m_attempts.inParallel(paths, [this, removal](const std::string& path) {
        if (!m_arguments.tree.dryRun) {
            (destination().*removal)(path);
        }
        note(TreeStep::Delete, path, m_result.deleted);
    });
}

// What an earlier run has left of files that are here now: nobody else needs it. With --delete, all of it.
void TreeRun::removeLeftovers()
{
    if (m_arguments.tree.dryRun) {
        return;
    }
    std::vector<std::string> ours;
    for (const std::string& path : m_destination.leftovers) {
        const auto [directory, name] = splitPath(path);
        const std::string target = *targetOfLeftover(name);
        const std::string of = pathIn(directory, target);
        const auto source = m_source.entries.lower_bound(of);
        const bool isOfSource = source != m_source.entries.end() &&
                                (mayBeCut(name, target) ? boost::starts_with(source->first, of) : source->first == of);
        if (isOfSource || m_arguments.tree.deletes) {
            ours.push_back(path);
        }
    }
    m_attempts.inParallel(ours, [this](const std::string& path) {
        try {
            destination().removeFile(path);
        } catch (const TreeFailure&) { // a transfer that was resumed has taken it away
        }
    });
}

void TreeRun::note(TreeStep step, const std::string& path, std::uint64_t& count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++count;
    if (m_result.isDryRun) {
        m_result.actions.push_back({step, path});
    }
}

void TreeRun::conclude()
{
    m_result.seconds = m_attempts.seconds();
    m_result.failed = m_attempts.failed();
    std::sort(m_result.actions.begin(), m_result.actions.end(), [](const TreeAction& one, const TreeAction& other) {
        return std::tie(one.step, one.path) < std::tie(other.step, other.path);
    });
    if (const int signal = Interruption::signal()) {
        m_result.signal = nameOfSignal(signal);
        m_result.code = CURLE_ABORTED_BY_CALLBACK;
        m_result.text = "interrupted by " + m_result.signal + "; the same command goes on from here";
    } else if (m_attempts.isLate()) {
        m_result.code = CURLE_OPERATION_TIMEDOUT;
        m_result.text = curl_easy_strerror(CURLE_OPERATION_TIMEDOUT) + std::string(": it did not finish within ") +
                        std::to_string(m_arguments.maxTime.count()) +
                        " s (--max-time); the same command goes on from here";
    } else if (!m_result.failed.empty()) {
        const FailedPath& first = m_result.failed.front();
        m_result.code = first.code;
        m_result.text =
            (first.path.empty() ? "" : first.path + ": ") + first.text + (m_mayDelete ? "; nothing was deleted" : "");
    } else {
        m_result.text = curl_easy_strerror(CURLE_OK);
    }
}
