// "doctor --write": a step that hangs, a signal, and a process that is killed.
#include "harness/Write.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <memory>

namespace {

struct Hang
{
    const char* command;
    const char* operation;
};

void PrintTo(const Hang& hang, std::ostream* stream) { *stream << hang.command; }

class WriteHanging : public Write, public testing::WithParamInterface<Hang>
{
};

TEST_P(WriteHanging, GivesUpWithoutConfirmingTheStep)
{
    misbehave(std::string(GetParam().command) + "=stall");
    EXPECT_EQ(3, write("/", {"--timeout", "4"})) << said;
    const std::string operation = GetParam().operation;
    EXPECT_EQ("unknown ", outlookOf(operation));
    EXPECT_EQ("tried, and it did not finish within 12 seconds", reasonOf(operation));
    EXPECT_EQ("fail: given up: the " + operation + " did not finish within 12 seconds", roundTrip());
    expectNothingLeft();
}

constexpr Hang kHangs[] = {{"STOR", "upload"}, {"RETR", "download"}};
INSTANTIATE_TEST_SUITE_P(At, WriteHanging, testing::ValuesIn(kHangs),
                         [](const testing::TestParamInfo<Hang>& of) { return std::string(of.param.command); });

/// Waits for a file to be written in a folder.
class FileWatch
{
public:
    explicit FileWatch(const std::string& folder) : m_watch(inotify_init1(IN_CLOEXEC))
    {
        if (m_watch < 0 || inotify_add_watch(m_watch, folder.c_str(), IN_CLOSE_WRITE) < 0) {
            throw std::runtime_error(folder + " cannot be watched.");
        }
    }
    ~FileWatch() { close(m_watch); }
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// For one whose name has this part.
    void wait(const std::string& part = {}) const
    {
        for (bool isSeen = false; !isSeen;) {
            alignas(inotify_event) std::array<char, 4096> events = {};
            const ssize_t size = read(m_watch, events.data(), events.size());
            ASSERT_GT(size, 0);
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                const auto& event = *reinterpret_cast<const inotify_event*>(&events[at]);
                isSeen = isSeen || holds(part, static_cast<const char*>(event.name));
                at += sizeof event + event.len;
            }
        }
    }

private:
    int m_watch;
};

/// A doctor that has sent its file.
class WriteBegun : public Write
{
protected:
    /// `part`: of the file's name.
    DoctorProcess& begin(const Variables& environment = {}, int ignored = 0, const std::string& part = {},
                         const std::string& reader = {})
    {
        serve();
        const FileWatch watch(served(""));
        m_process = std::make_unique<DoctorProcess>(arguments(), config.password, environment, ignored, reader);
        watch.wait(part);
        return *m_process;
    }

private:
    std::unique_ptr<DoctorProcess> m_process;
};

// Of the session in which the file is sent.
constexpr char kUploadStalls[] = "6/DONE#2=stall";

class WriteInterrupted : public WriteBegun, public testing::WithParamInterface<int>
{
};

TEST_P(WriteInterrupted, CleansUpAndEndsByTheSignal)
{
    misbehave("RETR=stall");
    DoctorProcess& process = begin(variables());
    process.signal(GetParam());
    EXPECT_EQ(-GetParam(), report(process));
    expectNothingLeft();
    EXPECT_EQ("", process.err());
}

TEST_F(WriteBegun, ContinuesAfterAnIgnoredSignal)
{
    DoctorProcess& process = begin({}, SIGHUP);
    process.signal(SIGHUP);
    EXPECT_EQ(0, process.wait());
    EXPECT_TRUE(nothingIsLeft());
}

TEST_P(WriteInterrupted, NamesWhatItCannotRemove)
{
    misbehave("RETR=stall");
    misbehave("DELE=reply:550 read-only");
    DoctorProcess& process = begin();
    process.signal(GetParam());
    EXPECT_EQ(-GetParam(), process.wait());
    EXPECT_FALSE(nothingIsLeft());
    EXPECT_EQ(0U, process.err().find("sftpclient: left behind: ftp://localhost:")) << process.err() << process.out();
}

// Ctrl-C ends the program that reads the report, too.
TEST_P(WriteInterrupted, NamesWhatItCannotRemoveAlsoIfNobodyReadsTheReport)
{
    misbehave("RETR=stall");
    misbehave("DELE=reply:550 read-only");
    Pipe pipe;
    DoctorProcess& process = begin({}, 0, {}, pipe.writer());
    pipe.closeReader();
    process.signal(GetParam());
    EXPECT_EQ(-SIGPIPE, process.wait());
    EXPECT_FALSE(nothingIsLeft());
    EXPECT_EQ(0U, process.err().find("sftpclient: left behind: ftp://localhost:")) << process.err();
}

// A session sends its file in the seventh session; the eighth cleans up.
TEST_F(WriteBegun, NamesTheSessionsFileTooIfItCannotLook)
{
    misbehave("RETR=stall");
    misbehave("8/USER=drop");
    DoctorProcess& process = begin({}, 0, "-session");
    process.signal(SIGTERM);
    EXPECT_EQ(-SIGTERM, process.wait());
    const std::string told = process.err();
    const std::string beginning = "sftpclient: perhaps left behind: files whose names contain ";
    ASSERT_EQ(0U, told.find(beginning)) << told << process.out();
    const std::string name = told.substr(beginning.size(), told.size() - beginning.size() - 1);
    EXPECT_TRUE(exists(served(name)));
    int files = 0;
    for (const auto& each : std::filesystem::directory_iterator(served(""))) {
        EXPECT_TRUE(holds(name, each.path().filename())) << each.path();
        ++files;
    }
    EXPECT_EQ(2, files);
    EXPECT_TRUE(holds("perhaps files whose names contain " + name +
                          ": the server could not be asked; look, and "
                          "remove them by hand",
                      process.out()));
}

TEST_F(WriteBegun, LeavesNoLocalFileWhenItIsKilled)
{
    misbehave("RETR=stall");
    DoctorProcess& process = begin(variables());
    process.signal(SIGKILL);
    EXPECT_EQ(-SIGKILL, process.wait());
    EXPECT_TRUE(nothingIsLeftHere());
}

TEST_F(WriteBegun, DoesNotConfirmAStepWhoseProcessWasKilled)
{
    misbehave(kUploadStalls);
    DoctorProcess& process = begin(variables());
    kill(process.child(), SIGKILL);
    EXPECT_EQ(3, report(process)) << said;
    EXPECT_EQ("tried, and it ended without a result", reasonOf("upload"));
    EXPECT_EQ("fail: given up: the upload ended without a result", roundTrip());
    expectNothingLeft();
}

TEST_F(WriteBegun, BoundsTheMemoryForAListing)
{
    misbehave(kUploadStalls);
    const DoctorProcess& process = begin();
    const std::string library = "/proc/" + std::to_string(process.child());
    EXPECT_TRUE(holds("Max file size             67108864 ", contentOf(library + "/limits")));
    const std::string status = contentOf(library + "/status");
    const unsigned long long ignored = std::stoull(status.substr(status.find("SigIgn:") + 7), nullptr, 16);
    EXPECT_NE(0U, ignored >> (SIGXFSZ - 1) & 1U) << "a full file is a failure to be told";
}

INSTANTIATE_TEST_SUITE_P(BySignal, WriteInterrupted, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace
