#include "tree/Attempts.h"

#include "operation/Interruption.h"
#include "operation/Retry.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace {

// The server has no room for another connection: with fewer of them, all goes on.
bool isTooManyConnections(const TreeFailure& failure) { return failure.reply() == 421; }

constexpr std::chrono::milliseconds kPause(50);

} // namespace

Attempts::Attempts(const Arguments& arguments, SFtpSession& session, std::function<void()> show)
    : m_arguments(arguments), m_session(session), m_show(std::move(show)), m_connections(arguments.tree.jobs)
{
}

void Attempts::inParallel(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& step)
{
    if (paths.empty()) {
        return;
    }
    Workers all = workers(static_cast<unsigned>(std::min<std::size_t>(m_arguments.tree.jobs, paths.size())));
    for (const std::string& path : paths) {
        all.add([this, &path, &step] { return attempt(path, [&] { step(path); }); });
    }
    all.run();
}

Workers Attempts::workers(unsigned count)
{
    return {std::min(count, m_connections.load()), [this] { tick(); }};
}

Workers::Verdict Attempts::attempt(const std::string& path, const Step& step)
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

void Attempts::tryAgainAndAgain(const Step& step)
{
    Retry retry(m_arguments.retries, m_arguments.retryDelay);
    for (;;) {
        try {
            step();
            return;
        } catch (const TreeFailure& failure) {
            const bool isPassing = isTransient(static_cast<CURLcode>(failure.code()), failure.reply(), failure.what());
            if (!retry.isLeft() || !isPassing || isEnding() || (isTooManyConnections(failure) && m_connections > 1)) {
                throw;
            }
        }
        const auto until = std::chrono::steady_clock::now() + retry.next();
        while (std::chrono::steady_clock::now() < until && !isEnding()) {
            std::this_thread::sleep_for(kPause);
        }
    }
}

// False where there is only one left.
bool Attempts::takeConnectionAway()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_connections == 1) {
        return false;
    }
    --m_connections;
    return true;
}

bool Attempts::isEnding() const { return Interruption::signal() != 0 || m_isLate; }

void Attempts::fail(const std::string& path, const TreeFailure& failure)
{
    if (isEnding()) {
        return; // what is under way then is not the server's fault
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_failed.push_back({path, failure.code(), failure.what()});
}

double Attempts::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

void Attempts::tick()
{
    const auto elapsed = std::chrono::steady_clock::now() - m_begin;
    m_isLate = m_isLate || (m_arguments.maxTime.count() > 0 && elapsed > m_arguments.maxTime);
    if (isEnding()) {
        m_session.Cancel();
    }
    m_show();
}
