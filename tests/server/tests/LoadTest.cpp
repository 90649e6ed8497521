// Many sessions at once, and their end.
#include "ServerTest.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <future>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kSessions = 256;

class Load : public ServerTest
{
protected:
    // Clients and server are one process here, so each session costs several descriptors.
    Load()
    {
        rlimit limit = {};
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
};

TEST_F(Load, SessionsAtOnce)
{
    serve();
    std::vector<std::unique_ptr<RawClient>> clients;
    for (std::size_t i = 0; i < kSessions; ++i) {
        clients.push_back(login());
    }
    for (const auto& client : clients) {
        EXPECT_EQ("257 \"/\"", client->ask("PWD"));
    }
    clients.clear();
    EXPECT_EQ(kSessions, sessions().size());
}

TEST_F(Load, DownloadsAtOnce)
{
    const std::string content = randomBytes(100000);
    writeFile(served("a"), content);
    serve();
    std::vector<std::thread> threads;
    threads.reserve(kSessions);
    std::vector<int> results(kSessions, -1);
    for (int& result : results) {
        threads.emplace_back([this, &result, &content] {
            CurlClient downloads = client();
            const CURLcode code = downloads.download("a");
            result = code != CURLE_OK ? code : downloads.body == content ? 0 : -2;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::vector<int>(kSessions, CURLE_OK), results);
    EXPECT_EQ(kSessions, sessions().size());
}

TEST_F(Load, StopEndsWhateverSessionsAreDoing)
{
    writeFile(served("large"), randomBytes(20000000));
    misbehave("SYST=stall");
    misbehave("NOOP=delay:3600000");
    misbehave("FEAT=meet:2");
    misbehave("3/DATA=slow:1");
    misbehave("6/DATA=stall");
    serve();
    const auto idle = login();
    const auto stalled = login();
    const auto slow = login();
    const auto delayed = login();
    const auto waiting = login();
    const auto silent = login();
    const auto full = login();
    const auto alone = login();
    stalled->send("SYST\r\n");
    delayed->send("NOOP\r\n");
    alone->send("FEAT\r\n");
    const RawClient slowData(slow->extendedPassive());
    slow->ask("RETR large");
    waiting->extendedPassive();
    waiting->ask("RETR large");
    const RawClient silentData(silent->extendedPassive());
    silent->ask("RETR large");
    const RawClient fullData(full->extendedPassive());
    full->ask("RETR large");
    server->stop();
    EXPECT_EQ(8U, sessions().size());
    EXPECT_EQ("", idle->rest());
    server->stop();
}

TEST_F(Load, TranscriptsWaitForTheSessions)
{
    serve();
    auto client = login();
    auto transcripts = std::async(std::launch::async, [this] { return sessions(); });
    client->ask("QUIT");
    client.reset();
    EXPECT_EQ("< 221 goodbye", transcripts.get().at(0).back());
}

TEST_F(Load, EndedSessionsAreReportedOneAtATime)
{
    std::vector<std::string> told;
    config.keepTranscripts = false;
    config.onSessionEnd = [&told](const testserver::Transcript& transcript) { told.push_back(transcript.back()); };
    serve();
    {
        const auto first = login();
        const auto second = login();
        first->ask("PWD");
    }
    EXPECT_TRUE(sessions().empty());
    std::sort(told.begin(), told.end());
    EXPECT_EQ(Lines({"< 230 logged in", "< 257 \"/\""}), told);
}

TEST_F(Load, WithoutDescriptorsClientsWait)
{
    serve();
    const auto first = login();
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    rlimit scarce = limit;
    // The client's own descriptor is the last there is.
    const int next = ::dup(0);
    ::close(next);
    scarce.rlim_cur = static_cast<rlim_t>(next) + 1;
    setrlimit(RLIMIT_NOFILE, &scarce);
    RawClient second(server->port());
    EXPECT_EQ("257 \"/\"", first->ask("PWD"));
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ("220 ready", second.line());
}

} // namespace
