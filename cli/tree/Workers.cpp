#include "tree/Workers.h"

#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX's signal sets are not in <csignal>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr std::chrono::milliseconds kTick(100);

/// Blocks all signals for the threads that are made as long as it lives.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_before = {};
};

/// Threads that are waited for.
class Threads
{
public:
    ~Threads()
    {
        for (std::thread& each : m_threads) {
            each.join();
        }
    }

    template <typename Function>
    void add(Function function)
    {
        m_threads.emplace_back(function);
    }

private:
    std::vector<std::thread> m_threads;
};

} // namespace

Workers::Workers(unsigned count, std::function<void()> tick)
    : m_tick(std::move(tick)), m_count(count), m_threads(count), m_alive(count)
{
}

void Workers::add(Task task)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_tasks.push_back(std::move(task));
    m_changed.notify_one();
}

void Workers::run()
{
    {
        Threads threads;
        {
            const SignalsBlocked blocked;
            for (unsigned i = 0; i < m_count; ++i) {
                threads.add([this] { work(); });
            }
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_changed.wait_for(lock, kTick, [this] { return isOver(); })) {
            lock.unlock();
            m_tick();
            lock.lock();
        }
        // Those that still work are waited for, too.
        while (!m_changed.wait_for(lock, kTick, [this] { return m_busy == 0; })) {
            lock.unlock();
            m_tick();
            lock.lock();
        }
    }
    m_tick();
    if (m_thrown) {
        std::rethrow_exception(std::exchange(m_thrown, nullptr));
    }
}

void Workers::stop()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
}

void Workers::work()
{
    for (;;) {
        Task task;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_changed.wait(lock, [this] { return isOver() || !m_tasks.empty() || m_alive > m_threads; });
            if (isOver() || m_alive > m_threads) {
                --m_alive;
                m_changed.notify_all();
                return;
            }
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
            ++m_busy;
        }
        try {
            const Verdict verdict = task();
            finish(std::move(task), verdict, nullptr);
        } catch (...) {
            finish(nullptr, Verdict::Stop, std::current_exception());
        }
    }
}

void Workers::finish(Task task, Verdict verdict, const std::exception_ptr& thrown)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_busy;
    if (thrown && !m_thrown) {
        m_thrown = thrown;
    }
    m_stopped = m_stopped || verdict == Verdict::Stop;
    if (verdict == Verdict::Fewer) {
        m_tasks.push_front(std::move(task));
        m_threads = std::max(m_threads - 1, 1U);
    }
    m_changed.notify_all();
}
