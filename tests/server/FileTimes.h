#ifndef TESTSERVER_FILETIMES_H
#define TESTSERVER_FILETIMES_H

#include <map>
#include <mutex>
#include <string>

namespace testserver {

/// When files were modified, as clients are told: a fixed time, so that transcripts are the same each day, until MFMT
/// sets another one. For any number of threads.
class FileTimes
{
public:
    /// "YYYYMMDDhhmmss".
    std::string of(const std::string& absolute) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_times.find(absolute);
        return found == m_times.end() ? "20260101000000" : found->second;
    }

    void set(const std::string& absolute, const std::string& time)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_times[absolute] = time;
    }

private:
    mutable std::mutex m_mutex;
    std::map<std::string, std::string> m_times;
};

} // namespace testserver

#endif
