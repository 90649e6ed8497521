// Many threads on one session, and Cancel at every moment.
#include "SessionLive.h"

#include "support/Codes.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>

namespace {

constexpr unsigned kThreads = 32;

class SessionThreads : public SessionLive
{
protected:
    SessionThreads() { std::filesystem::create_directory(served("d")); }

    /// What thread `index` does, one call after the other, on files of its own; returns the codes.
    std::vector<int> work(SFtpSession& session, unsigned index, unsigned rounds) const
    {
        const std::string name = std::to_string(index) + ".bak";
        SFtpRequest file = requestFor("/d/" + name, name);
        SFtpRequest directory = requestFor("/d/");
        directory.remoteFileName = name;
        directory.localPath = name; // for a rename, which changes nothing
        std::vector<int> codes;
        std::string text;
        const auto note = [&codes](int code) { codes.push_back(code); };
        for (unsigned i = 0; i < rounds; ++i) {
            const std::string content = name + std::to_string(i);
            std::istringstream in(content);
            note(session.UploadFrom(file, in, text));
            note(session.DownLoadSFtpFile(file, text));
            std::vector<RemoteEntry> found;
            note(session.ListEntries(directory, found, text));
            RemoteEntry one;
            note(session.StatEntry(file, one, text));
            note(session.ReNameSFtpFile(directory, text));
            note(session.DelSFtpFile(directory, text));
        }
        return codes;
    }

    /// All threads at once; returns the codes that came.
    std::set<int> workAtOnce(SFtpSession& session, unsigned rounds)
    {
        std::vector<std::thread> threads;
        std::vector<std::vector<int>> codes(kThreads);
        for (unsigned i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] { codes[i] = work(session, i, rounds); });
        }
        std::set<int> all;
        for (unsigned i = 0; i < kThreads; ++i) {
            threads[i].join();
            all.insert(codes[i].begin(), codes[i].end());
        }
        return all;
    }

    Lines leftovers() const
    {
        Lines names;
        for (const char* const each : {"served", "local"}) {
            for (const auto& left : std::filesystem::recursive_directory_iterator(folder.file(each))) {
                if (left.path().string().find(".part") != std::string::npos) {
                    names.push_back(left.path().filename());
                }
            }
        }
        return names;
    }
};

SFtpSession* storming = nullptr;
std::atomic<unsigned> storms{0};

void cancelAndClear(int /*signal*/)
{
    ++storms;
    storming->Cancel();
    storming->ClearCancel();
}

void cancelAlone(int /*signal*/) { storming->Cancel(); }

/// A signal each so many microseconds, to the thread that made this object, for as long as it lives.
class Alarm
{
public:
    Alarm(void (*handler)(int), long every) : m_before(std::signal(SIGALRM, handler))
    {
        sigevent event = {};
        event.sigev_notify = SIGEV_THREAD_ID;
        event.sigev_signo = SIGALRM;
        event._sigev_un._tid = gettid(); // the C library has no other name for it
        EXPECT_EQ(0, timer_create(CLOCK_MONOTONIC, &event, &m_timer));
        const itimerspec interval = {{0, every * 1000}, {0, every * 1000}};
        EXPECT_EQ(0, timer_settime(m_timer, 0, &interval, nullptr));
    }
    ~Alarm()
    {
        timer_delete(m_timer);
        std::signal(SIGALRM, m_before);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    void (*m_before)(int);
    timer_t m_timer = nullptr;
};

} // namespace

TEST_F(SessionThreads, ThirtyTwoShareTheConnectionsThatMayBe)
{
    constexpr unsigned kMost = 5;
    serve();
    {
        SessionOptions options;
        options.maxConnections = kMost;
        SFtpSession session(options);
        EXPECT_EQ(std::set<int>{0}, workAtOnce(session, 2));
    }
    EXPECT_GE(kMost, sessions().size()) << "each connection was kept: another one would be another session";
    EXPECT_EQ(Lines{}, leftovers());
}

TEST_F(SessionThreads, CancelledAtEveryMoment)
{
    serve();
    SFtpSession session;
    std::atomic<bool> over{false};
    std::vector<std::thread> cancelling;
    for (unsigned i = 0; i < 2; ++i) {
        cancelling.emplace_back([&, i] {
            for (unsigned turn = 0; !over; ++turn) {
                session.Cancel();
                if (turn % 3 == i) {
                    std::this_thread::yield();
                }
                session.ClearCancel();
                std::this_thread::sleep_for(std::chrono::microseconds(100 + 700 * (turn % 5)));
            }
        });
    }
    // Missing files, because the upload before them was cancelled, are no failure of theirs.
    const std::set<int> codes = workAtOnce(session, 4);
    over = true;
    for (std::thread& each : cancelling) {
        each.join();
    }
    for (const int code : codes) {
        const std::set<int> allowed = {CURLE_OK, CURLE_ABORTED_BY_CALLBACK, CURLE_REMOTE_FILE_NOT_FOUND,
                                       CURLE_QUOTE_ERROR};
        EXPECT_EQ(1U, allowed.count(code)) << nameOf(code);
    }
    EXPECT_EQ(1U, codes.count(CURLE_ABORTED_BY_CALLBACK));
    // And then the session is as good as new.
    session.ClearCancel();
    EXPECT_EQ(std::set<int>{0}, workAtOnce(session, 1));
}

TEST_F(SessionThreads, ThoseWhoWaitForAConnectionAreCancelledToo)
{
    misbehave("USER=stall");
    serve();
    aimAt("/");
    SessionOptions options;
    options.maxConnections = 1;
    SFtpSession session(options);
    std::vector<std::thread> threads;
    std::vector<int> codes(kThreads, -1);
    std::vector<std::string> texts(kThreads);
    std::atomic<unsigned> begun{0};
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            ++begun;
            codes[i] = session.TestSConnect(request, texts[i]);
        });
    }
    while (begun < kThreads) {
        std::this_thread::yield();
    }
    session.Cancel();
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_EQ(std::vector<int>(kThreads, CURLE_ABORTED_BY_CALLBACK), codes);
    EXPECT_GE(1U, sessions().size());
}

TEST_F(SessionThreads, AStormOfSignalsCancelsAndSpoilsNothing)
{
    serve();
    SFtpSession session;
    storming = &session;
    std::set<int> codes;
    {
        const Alarm alarm(cancelAndClear, 700);
        for (const int code : work(session, 1, 40)) {
            codes.insert(code);
        }
    }
    EXPECT_LT(0U, storms);
    for (const int code : codes) {
        const std::set<int> allowed = {CURLE_OK, CURLE_ABORTED_BY_CALLBACK, CURLE_REMOTE_FILE_NOT_FOUND,
                                       CURLE_QUOTE_ERROR};
        EXPECT_EQ(1U, allowed.count(code)) << nameOf(code);
    }
    EXPECT_EQ((std::vector<int>(6, 0)), work(session, 1, 1));
}

TEST_F(SessionThreads, ASignalAfterAnyTimeStopsACall)
{
    serve();
    writeFile(served("a.bak"), std::string(200000, 'x'));
    aimAt("/a.bak");
    writeFile(request.localPath, "before");
    unsigned cancelled = 0;
    for (long after = 300; after < 30000; after += 700) {
        SCOPED_TRACE(std::to_string(after) + " microseconds");
        SFtpSession session;
        storming = &session;
        const Alarm alarm(cancelAlone, after);
        const int code = session.DownLoadSFtpFile(request, errorText);
        cancelled += code == CURLE_OK ? 0 : 1;
        EXPECT_TRUE(code == CURLE_OK || code == CURLE_ABORTED_BY_CALLBACK) << nameOf(code) << errorText;
        EXPECT_TRUE(sameBytes(code == CURLE_OK ? std::string(200000, 'x') : "before", contentOf(request.localPath)));
        writeFile(request.localPath, "before");
    }
    EXPECT_LT(0U, cancelled);
    EXPECT_EQ(Lines{}, leftovers());
}
