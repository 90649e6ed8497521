#include "tree/TreeRun.h"

#include "operation/Interruption.h"
#include "operation/Retry.h"

#include <curl/curl.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <thread>
#include <tuple>
#include <utility>

namespace {

// The server has no room for another connection: with fewer of them, all goes on.
bool isTooManyConnections(const TreeFailure& failure) { return failure.reply() == 421; }

std::size_t depthOf(const std::string& path)
{
    return path.empty() ? 0 : 1 + static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
}

constexpr std::chrono::milliseconds kPause(50);

bool holdsFile(const TreeListing& listing)
{
    return std::any_of(listing.entries.begin(), listing.entries.end(),
                       [](const auto& each) { return each.second.kind == EntryKind::File; });
}

} // namespace

TreeRun::TreeRun(const Arguments& arguments, SFtpSession& session, RemoteTree& remote, Board& board,
                 std::function<void()> show)
    : m_arguments(arguments), m_session(session), m_remote(remote), m_board(board), m_show(std::move(show)),
      m_isPush(arguments.operation == Operation::Push), m_exclusions(arguments.tree.excluded),
      m_connections(arguments.tree.jobs)
{
    m_result.operation = arguments.name;
    m_result.isDryRun = arguments.tree.dryRun;
}

TreeResult TreeRun::run()
{
    try {
        runPhases();
    } catch (const TreeFailure& failure) {
        fail("", failure);
    }
    conclude();
    return m_result;
}

void TreeRun::runPhases()
{
    TreeListing& local = m_isPush ? m_source : m_destination;
    TreeListing& remote = m_isPush ? m_destination : m_source;
    listLocal(local);
    if (!mayGoOn()) {
        return;
    }
    // What the source lacks matters only where it is to be deleted.
    listRemote(remote, m_isPush && !m_arguments.tree.deletes ? &m_source : nullptr);
    m_result.skipped = m_source.links;
    std::sort(m_result.skipped.begin(), m_result.skipped.end());
    if (!mayGoOn()) {
        return;
    }
    m_direction = m_isPush ? makePush(m_arguments.local, m_remote)
                           : makePull(m_arguments.local, m_remote, m_arguments.resumes ? "" : std::to_string(getpid()));
    const Plan plan = planOf(m_source, m_destination, {m_isPush, m_arguments.tree.checksum, m_arguments.tree.deletes});
    m_result.unchanged = plan.unchanged;
    refuseToEmpty(plan);
    m_mayDelete = !plan.files.empty() || !plan.folders.empty();
    for (const std::string& path : plan.blocked) {
        fail(path, {m_direction->codeOfBlocked(), "something of another kind has this name at the destination"});
    }
    for (const FailedPath& each : plan.refused) {
        fail(each.path, {each.code, each.text});
    }
    if (!makeDirectories(plan)) {
        return;
    }
    moveFiles(plan);
    if (m_result.failed.empty() && !isEnding()) {
        removeLeftovers();
        m_mayDelete = false; // from here on, a failure does not mean that nothing was deleted
        removeAll(plan);
    }
}

bool TreeRun::mayGoOn() const { return !isEnding() && (m_result.failed.empty() || m_arguments.tree.keepsGoing); }

void TreeRun::listLocal(TreeListing& listing)
{
    listing = LocalTree::list(m_arguments.local, m_exclusions,
                              [this](const std::string& path, const TreeFailure& failure) { fail(path, failure); });
    if (m_isPush && listing.isMissing) {
        throw TreeFailure(CURLE_READ_ERROR, m_arguments.local + " is not there");
    }
}

void TreeRun::listRemote(TreeListing& listing, const TreeListing* wanted)
{
    Workers all = workers(m_arguments.tree.jobs);
    listRemoteDirectory(all, listing, wanted, "");
    all.run();
    if (listing.isMissing && !m_isPush) {
        throw TreeFailure(CURLE_REMOTE_FILE_NOT_FOUND, "there is no such directory on the server");
    }
}

void TreeRun::listRemoteDirectory(Workers& workers, TreeListing& listing, const TreeListing* wanted,
                                  const std::string& path)
{
    workers.add([this, &workers, &listing, wanted, path] {
        return attempt(path, [&] {
            const std::optional<std::vector<RemoteEntry>> entries = m_remote.list(path);
            if (entries) {
                takeEntries(workers, listing, wanted, path, *entries);
            } else if (path.empty()) {
                listing.isMissing = true;
            } else {
                throw TreeFailure(CURLE_REMOTE_FILE_NOT_FOUND, "the directory cannot be listed");
            }
        });
    });
}

void TreeRun::takeEntries(Workers& workers, TreeListing& listing, const TreeListing* wanted, const std::string& path,
                          const std::vector<RemoteEntry>& entries)
{
    if (depthOf(path) > kDeepest) {
        throw TreeFailure(CURLE_WEIRD_SERVER_REPLY,
                          "more directories within each other than " + std::to_string(kDeepest));
    }
    std::vector<std::string> below;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const RemoteEntry& each : entries) {
            const std::string here = pathIn(path, each.name);
            const bool isWanted =
                !holdsControlByte(each.name) && (wanted == nullptr || wanted->entries.count(here) > 0);
            if (isPlainName(each.name) &&
                addTo(listing, path, each.name, {each.kind, each.size, each.modified}, m_exclusions) && isWanted) {
                below.push_back(here);
            }
        }
    }
    for (const std::string& each : below) {
        listRemoteDirectory(workers, listing, wanted, each);
    }
}

// An empty source is rather a disk that is not mounted than what is meant.
void TreeRun::refuseToEmpty(const Plan& plan)
{
    if (!plan.files.empty() && !holdsFile(m_source) && !m_arguments.tree.forces) {
        throw TreeFailure(CURLE_FAILED_INIT,
                          "the source holds no file, and --delete would leave the destination without any: --force "
                          "says that this is meant");
    }
}

// False where there is not even the destination itself.
bool TreeRun::makeDirectories(const Plan& plan)
{
    std::map<std::size_t, std::vector<std::string>> byDepth;
    for (const std::string& path : plan.directories) {
        byDepth[depthOf(path)].push_back(path);
    }
    for (const auto& [depth, paths] : byDepth) {
        if (mayGoOn()) {
            inParallel(paths, [this](const std::string& path) {
                if (!m_arguments.tree.dryRun) {
                    m_direction->makeDirectory(path);
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
    if (!mayGoOn()) {
        return;
    }
    std::int64_t bytes = 0;
    for (const Move& each : plan.moves) {
        bytes += std::max<std::int64_t>(each.from.size, 0);
    }
    m_board.start(plan.moves.size(), bytes);
    Workers all = workers(m_arguments.tree.jobs);
    for (const Move& each : plan.moves) {
        all.add([this, &each] { return attempt(each.path, [this, &each] { moveFile(each); }); });
    }
    all.run();
}

void TreeRun::moveFile(const Move& move)
{
    const bool isDryRun = m_arguments.tree.dryRun;
    const bool isSame = move.question != Question::None && m_direction->isSame(move, !isDryRun);
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
    m_result.unchanged += isSame ? 1 : 0;
    m_result.bytes += isSame ? 0 : std::max<std::int64_t>(move.from.size, 0);
}

void TreeRun::removeAll(const Plan& plan)
{
    const auto remove = [this](const std::string& path, const Step& step) {
        if (!m_arguments.tree.dryRun) {
            step();
        }
        note(TreeStep::Delete, path, m_result.deleted);
    };
    inParallel(plan.files, [&](const std::string& path) { remove(path, [&] { m_direction->removeFile(path); }); });
    std::map<std::size_t, std::vector<std::string>, std::greater<>> byDepth;
    for (const std::string& path : plan.folders) {
        byDepth[depthOf(path)].push_back(path);
    }
    for (const auto& [depth, paths] : byDepth) {
        if (mayGoOn()) {
            inParallel(paths,
                       [&](const std::string& path) { remove(path, [&] { m_direction->removeDirectory(path); }); });
        }
    }
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
        const auto source = m_source.entries.find(pathIn(directory, *targetOfLeftover(name)));
        if (source != m_source.entries.end() || m_arguments.tree.deletes) {
            ours.push_back(path);
        }
    }
    inParallel(ours, [this](const std::string& path) { clearLeftovers(path); });
}

// A transfer that was resumed has taken it away.
void TreeRun::clearLeftovers(const std::string& path)
try {
    m_direction->removeFile(path);
} catch (const TreeFailure&) {
}

void TreeRun::inParallel(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& work)
{
    if (paths.empty()) {
        return;
    }
    Workers all = workers(static_cast<unsigned>(std::min<std::size_t>(m_arguments.tree.jobs, paths.size())));
    for (const std::string& path : paths) {
        all.add([this, &path, &work] { return attempt(path, [&] { work(path); }); });
    }
    all.run();
}

Workers TreeRun::workers(unsigned count)
{
    return {std::min(count, m_connections), [this] { tick(); }};
}

Workers::Verdict TreeRun::attempt(const std::string& path, const Step& step)
{
    if (isEnding()) {
        return Workers::Verdict::Stop;
    }
    try {
        tryAgainAndAgain(step);
    } catch (const TreeFailure& failure) {
        if (isTooManyConnections(failure) && takeConnectionAway()) {
            return Workers::Verdict::Fewer;
        }
        fail(path, failure);
        return m_arguments.tree.keepsGoing ? Workers::Verdict::Done : Workers::Verdict::Stop;
    }
    return Workers::Verdict::Done;
}

void TreeRun::tryAgainAndAgain(const Step& step)
{
    Retry retry(m_arguments.retries, m_arguments.retryDelay);
    for (;;) {
        try {
            step();
            return;
        } catch (const TreeFailure& failure) {
            const bool isPassing = isTransient(static_cast<CURLcode>(failure.code()), failure.reply());
            if (!retry.isLeft() || !isPassing || isEnding() ||
                (isTooManyConnections(failure) && hasSpareConnection())) {
                throw;
            }
        }
        const auto until = std::chrono::steady_clock::now() + retry.next();
        while (std::chrono::steady_clock::now() < until && !isEnding()) {
            std::this_thread::sleep_for(kPause);
        }
    }
}

bool TreeRun::hasSpareConnection()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections > 1;
}

// False where there is only one left.
bool TreeRun::takeConnectionAway()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_connections == 1) {
        return false;
    }
    --m_connections;
    return true;
}

bool TreeRun::isEnding() const { return Interruption::signal() != 0 || m_isLate; }

void TreeRun::fail(const std::string& path, const TreeFailure& failure)
{
    if (isEnding()) {
        return; // what is under way then is not the server's fault
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_result.failed.push_back({path, failure.code(), failure.what()});
}

void TreeRun::note(TreeStep step, const std::string& path, std::uint64_t& count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++count;
    if (m_result.isDryRun) {
        m_result.actions.push_back({step, path});
    }
}

void TreeRun::tick()
{
    const auto elapsed = std::chrono::steady_clock::now() - m_begin;
    m_isLate = m_isLate || (m_arguments.maxTime.count() > 0 && elapsed > m_arguments.maxTime);
    if (isEnding()) {
        m_session.Cancel();
    }
    m_show();
}

void TreeRun::conclude()
{
    m_result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
    std::sort(m_result.actions.begin(), m_result.actions.end(), [](const TreeAction& one, const TreeAction& other) {
        return std::tie(one.step, one.path) < std::tie(other.step, other.path);
    });
    if (const int signal = Interruption::signal()) {
        m_result.signal = nameOfSignal(signal);
        m_result.code = CURLE_ABORTED_BY_CALLBACK;
        m_result.text = "interrupted by " + m_result.signal + "; the same command goes on from here";
    } else if (m_isLate) {
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
