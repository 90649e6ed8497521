#include "harness/AppliedSettings.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <HostLog.h>
#include <LogProxy.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <thread>
#include <vector>

namespace {

constexpr unsigned kThreads = 32;

void onThreads(const std::function<void(unsigned thread)>& work)
{
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

std::string textOf(unsigned thread, std::size_t length) { return std::string(length, static_cast<char>('0' + thread)); }

void writeRecords(unsigned thread, unsigned count, std::size_t length)
{
    for (unsigned record = 0; record < count; ++record) {
        LogProxy(1, "m", thread, "f()", record) << 0 << textOf(thread, length);
    }
}

// Each record of `writeRecords` once, whole, and nothing else.
void expectAllRecords(const std::string& log, unsigned count, std::size_t length)
{
    std::map<std::string, unsigned> seen;
    for (const std::string& line : linesOf(replaceTimes(log))) {
        ++seen[line];
    }
    EXPECT_EQ(kThreads * count, seen.size());
    for (unsigned thread = 0; thread < kThreads; ++thread) {
        for (unsigned record = 0; record < count; ++record) {
            const std::string expected = "TIME debug m request=" + std::to_string(thread) +
                                         " f():" + std::to_string(record) + " " + textOf(thread, length);
            ASSERT_EQ(1U, seen[expected]) << "thread " << thread << ", record " << record;
        }
    }
}

} // namespace

// Records far longer than what a pipe takes at once: unless each is written under a lock, they mix.
TEST(HostLogThreads, RecordsAreWholeInAPipe)
{
    Pipe pipe;
    const int writer = open(pipe.writer().c_str(), O_WRONLY | O_CLOEXEC);
    pipe.closeWriter();
    HostLog::instance().setDescriptor(writer);
    std::string log;
    std::thread reader([&log, &pipe] { log = pipe.rest(); });
    onThreads([](unsigned thread) { writeRecords(thread, 10, 65536); });
    HostLog::instance().setDescriptor(STDERR_FILENO);
    close(writer);
    reader.join();
    expectAllRecords(log, 10, 65536);
}

TEST(HostLogThreads, RecordsAreWholeInRotatedFiles)
{
    const TemporaryFolder folder;
    HostLogSettings settings;
    settings.file = folder.file("log");
    settings.maxBytes = 20000;
    settings.files = 1000;
    {
        const AppliedSettings applied(settings);
        onThreads([](unsigned thread) { writeRecords(thread, 100, 300); });
    }
    std::string log;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_LE(entry.file_size(), settings.maxBytes);
        log += contentOf(entry.path());
        ++files;
    }
    EXPECT_GT(files, 50U);
    expectAllRecords(log, 100, 300);
}

// Format and file change together, under writers: a record that saw half a change would be in the wrong file.
TEST(HostLogThreads, SettingsChangeBetweenRecords)
{
    const TemporaryFolder folder;
    HostLogSettings text;
    text.file = folder.file("text");
    text.maxBytes = 1000000000;
    HostLogSettings json = text;
    json.file = folder.file("json");
    json.format = LogFormat::Json;
    const AppliedSettings applied(text);

    constexpr unsigned kWriters = 2; // with more, the changes would hardly get their turn
    std::atomic<bool> over{false};
    std::atomic<unsigned> written{0};
    std::vector<std::thread> writers;
    writers.reserve(kWriters);
    for (unsigned i = 0; i < kWriters; ++i) {
        writers.emplace_back([&over, &written, i] {
            while (!over) {
                writeRecords(i, 1, 10);
                ++written;
            }
        });
    }
    for (int i = 0; i < 40; ++i) {
        HostLog::instance().apply(i % 2 == 0 ? json : text);
        // Each thread may have begun one record before the change: one more was written after it.
        for (const unsigned before = written; written <= before + kWriters;) {
            std::this_thread::yield();
        }
    }
    over = true;
    for (std::thread& writer : writers) {
        writer.join();
    }

    std::size_t count = 0;
    for (const std::string name : {"text", "json"}) {
        const Lines lines = linesOf(replaceTimes(contentOf(folder.file(name))));
        for (const std::string& line : lines) {
            const std::string begin = name == "json" ? R"({"time":"TIME","level":"debug",)" : "TIME debug m request=";
            ASSERT_EQ(0, line.compare(0, begin.size(), begin)) << name << ": " << line;
            ASSERT_EQ(name == "json", line.back() == '}') << name << ": " << line;
        }
        EXPECT_FALSE(lines.empty()) << name;
        count += lines.size();
    }
    EXPECT_EQ(written, count);
}

TEST(HostLogThreads, NoRecordIsLostWhenTheLogIsRedirected)
{
    std::string log;
    {
        const LogCapture first;
        {
            const LogCapture second;
            std::thread changer([&] {
                for (int i = 0; i < 100; ++i) {
                    HostLog::instance().setDescriptor(i % 2 == 0 ? first.descriptor() : second.descriptor());
                }
            });
            onThreads([](unsigned thread) { writeRecords(thread, 100, 10); });
            changer.join();
            log = second.withoutTimes();
        }
        log += first.withoutTimes();
    }
    expectAllRecords(log, 100, 10);
}
