#ifndef SFTPCLIENT_CLI_TREE_WORKERS_H
#define SFTPCLIENT_CLI_TREE_WORKERS_H

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>

/// Threads that carry out tasks. A task may add further ones.
class Workers
{
public:
    enum class Verdict
    {
        Done,
        Stop,  ///< no further task begins
        Fewer, ///< the task is for another thread, and this one ends, unless it is the last
    };
    using Task = std::function<Verdict()>;

    /// `tick` is called ten times a second on the thread that waits.
    Workers(unsigned count, std::function<void()> tick);

    void add(Task task);

    /// Returns when all tasks are done, or none begins any more. What a task throws passes to the caller. Signals are
    /// left to the calling thread.
    void run();

private:
    void work();
    void finish(Task task, Verdict verdict, const std::exception_ptr& thrown);
    bool isOver() const { return m_stopped || (m_tasks.empty() && m_busy == 0); }

    const std::function<void()> m_tick;
    const unsigned m_count;
    std::mutex m_mutex; // for what follows
    std::condition_variable m_changed;
    std::deque<Task> m_tasks;
    unsigned m_threads; // that are to work
    unsigned m_alive;
    unsigned m_busy = 0;
    bool m_stopped = false;
    std::exception_ptr m_thrown;
};

#endif
