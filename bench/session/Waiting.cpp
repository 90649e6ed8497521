#include "Waiting.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Where threads wait for one another. One that has failed is not waited for.
class Meeting
{
public:
    explicit Meeting(int threads) : m_expected(threads) {}

    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        ++m_waiting;
        const int round = m_round;
        endRoundIfComplete();
        m_ended.wait(lock, [this, round] { return m_round != round; });
    }

    void leave()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        --m_expected;
        endRoundIfComplete();
    }

private:
    void endRoundIfComplete()
    {
        if (m_waiting > 0 && m_waiting >= m_expected) {
            m_waiting = 0;
            ++m_round;
            m_ended.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_ended;
    int m_expected;
    int m_waiting = 0;
    int m_round = 0;
};

// The threads meet within each transfer, so that each has a connection of its own.
int transferBothWays(SFtpSession& session, SFtpRequest request, int number, Meeting& meeting)
{
    std::string errorText;
    bool met = false;
    const auto meet = [&] {
        if (!met) {
            met = true;
            meeting.wait();
        }
    };
    int code = session.DownLoadTo(
        request,
        [&](const char* /*bytes*/, std::size_t /*count*/) {
            meet();
            return true;
        },
        errorText);
    if (code == 0) {
        std::size_t left = 100000;
        met = false;
        request.remotePath += "." + std::to_string(number);
        code = session.UploadFrom(
            request,
            [&](char* bytes, std::size_t count) {
                meet();
                const std::size_t given = std::min(count, left);
                std::fill_n(bytes, given, 'x');
                left -= given;
                return given;
            },
            errorText);
    }
    if (code != 0) {
        std::cerr << errorText << "\n";
        meeting.leave();
    }
    return code;
}

} // namespace

int keepConnections(const Arguments& arguments)
{
    SessionOptions options;
    options.maxConnections = static_cast<unsigned>(arguments.threads);
    options.idleTimeout = std::chrono::hours(1);
    SFtpSession session(options);
    Meeting meeting(arguments.threads);
    std::atomic<int> result{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < arguments.threads; ++i) {
        threads.emplace_back([&, i] {
            const int code = transferBothWays(session, arguments.request, i, meeting);
            int success = 0;
            result.compare_exchange_strong(success, code);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::this_thread::sleep_for(std::chrono::seconds(arguments.calls));
    return result;
}

int waitForStall(const Arguments& arguments)
{
    SessionOptions options;
    options.stallTimeout = std::chrono::seconds(arguments.calls);
    SFtpSession session(options);
    std::string errorText;
    const int code = session.DownLoadSFtpFile(arguments.request, errorText);
    if (code == CURLE_OPERATION_TIMEDOUT) {
        return 0;
    }
    std::cerr << "The download did not stall; it ended with " << code << ": " << errorText << "\n";
    return 1;
}
