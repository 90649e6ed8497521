#include "tree/Workers.h"

#include "base/Signals.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <utility>
#include <vector>

namespace {

constexpr std::chrono::milliseconds kTick(100);

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
        std::vector<std::future<void>> threads; // each waits for its own at the end
        {
            sigset_t all;
            sigfillset(&all);
            const SignalsBlocked blocked(all);
            for (unsigned i = 0; i < m_count; ++i) {
                threads.push_back(std::async(std::launch::async, [this] { work(); }));
            }
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        // After a stop, those that still work are waited for, too.
        while (!m_changed.wait_for(lock, kTick, [this] { return isOver() && m_busy == 0; })) {
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
