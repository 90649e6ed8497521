// "doctor --write": what it shows, and that nothing is left on the server.
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"

#include <nlohmann/json.hpp>

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>

namespace {

class Write : public Examined
{
protected:
    std::vector<std::string> arguments(const std::string& target)
    {
        writeFile(local("ca.pem"), request.caCert);
        return {target, "--user", config.user, "--ca", local("ca.pem"), "--clear-login", "--write", "--json"};
    }

    /// With a separate folder for its temporary files.
    Variables variables()
    {
        std::filesystem::create_directory(local("tmp"));
        return {{"TMPDIR", local("tmp")}};
    }
    bool nothingIsLeftHere() const { return std::filesystem::is_empty(local("tmp")); }

    /// Runs it and keeps its report.
    int write(const std::string& directory = "/", const std::vector<std::string>& more = {})
    {
        serve();
        std::vector<std::string> words = arguments(url(directory));
        words.insert(words.end(), more.begin(), more.end());
        DoctorProcess process(words, config.password, variables());
        return report(process);
    }

    /// Keeps its report. Returns the exit status.
    int report(DoctorProcess& process)
    {
        const int status = process.wait();
        m_said = process.out() + process.err();
        m_report = nlohmann::json::parse(process.out());
        EXPECT_TRUE(nothingIsLeftHere());
        return status;
    }

    nlohmann::json predictionOf(const std::string& operation) const
    {
        for (const auto& each : m_report["operations"]) {
            if (each["operation"] == operation) {
                return each;
            }
        }
        throw std::runtime_error(operation + " is not told");
    }

    std::string outlookOf(const std::string& operation) const
    {
        const nlohmann::json prediction = predictionOf(operation);
        return prediction["outlook"].get<std::string>() + " " +
               (prediction["code"].is_null() ? "" : prediction["code"].dump());
    }

    std::string reasonOf(const std::string& operation) const { return predictionOf(operation)["reason"]; }

    std::size_t logins()
    {
        std::size_t count = 0;
        for (const testserver::Transcript& session : sessions()) {
            count +=
                static_cast<std::size_t>(std::count_if(session.begin(), session.end(), [](const std::string& line) {
                    return line.compare(0, 6, "> PASS") == 0;
                }));
        }
        return count;
    }

    bool nothingIsLeft() const { return std::filesystem::is_empty(served("")); }
    /// What the report says about the round trip as a whole.
    std::string roundTrip(const std::string& which = "round trip") const
    {
        for (const auto& each : m_report["findings"]) {
            if (each["probe"] == which) {
                return each["grade"].get<std::string>() + ": " + each["seen"].get<std::string>();
            }
        }
        return "not told";
    }

    std::size_t leftBehind() const { return m_report["leftBehind"].size(); }
    std::string said() const { return m_said; }

    std::string m_said;
    nlohmann::json m_report;
};

TEST_F(Write, LeavesNothingBehindOnSuccess)
{
    EXPECT_EQ(0, write());
    for (const char* const operation : {"download", "upload", "rename", "delete", "list", "test"}) {
        EXPECT_EQ("works 0", outlookOf(operation)) << operation;
    }
    EXPECT_EQ("ok: a small file was sent, listed, fetched, renamed and removed", roundTrip());
    EXPECT_EQ(roundTrip(), roundTrip("session's round trip"));
    EXPECT_TRUE(nothingIsLeft());
    EXPECT_EQ(0U, leftBehind());
}

TEST_F(Write, TakesEightConnectionsAndFourLogins)
{
    EXPECT_EQ(0, write());
    EXPECT_EQ(8U, sessions().size());
    EXPECT_EQ(4U, logins());
}

TEST_F(Write, CleansUpInADirectoryToo)
{
    std::filesystem::create_directories(served("weekly/the backups"));
    misbehave("rm=reply:550 read-only");
    EXPECT_EQ(3, write("/weekly/the%20backups/")) << "rename and delete stay unknown";
    EXPECT_EQ("works 0", outlookOf("upload"));
    EXPECT_EQ("not told", roundTrip());
    EXPECT_TRUE(std::filesystem::is_empty(served("weekly/the backups"))) << said();
    EXPECT_EQ(0U, leftBehind()) << said();
}

TEST_F(Write, RunsThroughTheLibrary)
{
    EXPECT_EQ(0, write());
    std::string all;
    for (const testserver::Transcript& session : sessions()) {
        for (const std::string& line : session) {
            all += line + "\n";
        }
    }
    for (const char* const command : {"> STOR sftpclient-doctor-", "> RETR sftpclient-doctor-",
                                      "> rename /sftpclient-doctor-", "> rm /sftpclient-doctor-"}) {
        EXPECT_TRUE(holds(command, all)) << command;
    }
}

struct Failure
{
    const char* id;
    std::vector<std::string> faults;
    const char* operation;
    const char* outlook;
};

void PrintTo(const Failure& failure, std::ostream* stream) { *stream << failure.id; }

const Failure kFailures[] = {
    {"Put", {"STOR=reply:553 read-only"}, "upload", "fails 25"},
    {"PutMidway", {"6/DATA#2=drop-after:1000"}, "upload", "fails"},
    {"List", {"NLST=reply:550 no"}, "list", "fails 19"},
    {"Get", {"RETR=reply:550 no"}, "download", "fails 78"},
    {"Rename", {"rename=reply:553 read-only"}, "rename", "fails 21"},
    {"RenameUnknown", {"rename=reply:500 unknown command", "rm=reply:500 unknown command"}, "rename", "fails 21"},
    {"Delete", {"rm=reply:550 read-only"}, "delete", "fails 21"},
    {"DeleteClaimed", {"rm=reply:250 done"}, "delete", "works 0"},
    {"NoTls", {"AUTH=reply:502 no"}, "list", "fails 64"},
};

class WriteFailing : public Write, public testing::WithParamInterface<Failure>
{
};

TEST_P(WriteFailing, LeavesNothingBehindEither)
{
    for (const std::string& fault : GetParam().faults) {
        misbehave(fault);
    }
    write();
    EXPECT_EQ(0U, outlookOf(GetParam().operation).find(GetParam().outlook)) << said();
    EXPECT_TRUE(nothingIsLeft()) << said();
    EXPECT_EQ(0U, leftBehind()) << said();
    EXPECT_FALSE(holds("left behind", said()));
}

INSTANTIATE_TEST_SUITE_P(AtAStep, WriteFailing, testing::ValuesIn(kFailures),
                         [](const testing::TestParamInfo<Failure>& of) { return std::string(of.param.id); });

// The session in which SFtpSession tries its operations.
TEST_F(Write, TriesASessionsListingToo)
{
    misbehave("7/NLST=reply:550 not now");
    EXPECT_EQ(0, write()) << said();
    const nlohmann::json list = predictionOf("list")["session"];
    EXPECT_EQ("fails", list["outlook"]);
    EXPECT_EQ(19, list["code"]);
    EXPECT_EQ("tried, and the server refuses it (550 not now)", list["reason"]);
    EXPECT_EQ("Let the user list that directory, at the server.", list["remedy"]);
    EXPECT_EQ("works 0", outlookOf("list"));
}

struct Refusal
{
    const char* reply;
    int code;
    const char* remedy;
};

void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.reply; }

class WriteRefused : public Write, public testing::WithParamInterface<Refusal>
{
};

TEST_P(WriteRefused, QuotesTheReplyToAnUploadAndNamesTheRemedy)
{
    misbehave(std::string("STOR=reply:") + GetParam().reply);
    EXPECT_EQ(1, write()) << said();
    nlohmann::json upload = predictionOf("upload");
    for (const nlohmann::json& each : {upload, upload["session"]}) {
        EXPECT_EQ("fails", each["outlook"]);
        EXPECT_EQ(GetParam().code, each["code"]);
        EXPECT_EQ(std::string("tried, and the server refuses it (") + GetParam().reply + ")", each["reason"]);
        EXPECT_EQ(GetParam().remedy, each["remedy"]);
    }
    EXPECT_EQ(0U, leftBehind()) << said();
}

constexpr Refusal kRefusals[] = {
    {"552 over quota", 25, "Free space at the server for that user, or have the quota raised."},
    {"550 no permission", 25, "Let the user write, rename and delete in that directory, at the server."},
    {"421 too many", 28, "Ask the server's administrator what its log says; it may limit the connections."},
};

INSTANTIATE_TEST_SUITE_P(With, WriteRefused, testing::ValuesIn(kRefusals),
                         [](const testing::TestParamInfo<Refusal>& of) { return std::string(of.param.reply, 3); });

TEST_F(Write, NamesWhatCannotBeRemoved)
{
    misbehave("rm=reply:550 read-only");
    misbehave("DELE=reply:550 read-only");
    EXPECT_EQ(1, write());
    EXPECT_FALSE(nothingIsLeft());
    ASSERT_EQ(2U, leftBehind()) << said();
    for (const std::string left : m_report["leftBehind"]) {
        EXPECT_TRUE(exists(served(left.substr(left.rfind('/'))))) << left;
    }
}

// The eighth session is that of the round trip and of its clean-up.
class WriteClosed : public Write
{
protected:
    WriteClosed()
    {
        for (const char* const fault : {"8/rm=reply:550 no", "8/DELE#4=last:550 no", "8/DELE=reply:550 no"}) {
            misbehave(fault);
        }
    }

    // How many there are depends on when the end of the closed one is noticed.
    void onLaterConnections(const std::string& fault)
    {
        for (int number = 9; number <= 13; ++number) {
            misbehave(std::to_string(number) + "/" + fault);
        }
    }
};

TEST_F(WriteClosed, LooksOverAnotherConnection)
{
    onLaterConnections("DELE=reply:550 no");
    EXPECT_EQ(1, write());
    ASSERT_EQ(1U, leftBehind()) << said();
    const std::string left = m_report["leftBehind"][0];
    EXPECT_TRUE(exists(served(left.substr(left.rfind('/'))))) << left;
}

TEST_F(WriteClosed, RemovesOverAnotherConnectionWhatItSees)
{
    EXPECT_EQ(1, write());
    EXPECT_TRUE(nothingIsLeft()) << said();
    EXPECT_EQ(0U, leftBehind()) << said();
    EXPECT_FALSE(holds("left behind", said()));
}

TEST_F(WriteClosed, SaysThatItCouldNotLook)
{
    onLaterConnections("NLST=drop");
    onLaterConnections("DELE=reply:550 no");
    EXPECT_EQ(1, write());
    EXPECT_FALSE(nothingIsLeft());
    EXPECT_EQ(0U, leftBehind()) << said();
    EXPECT_TRUE(holds("the server could not be asked", said())) << said();
}

TEST_F(WriteClosed, DoesNotRepeatARefusedLogin)
{
    onLaterConnections("PASS=reply:530 no");
    EXPECT_EQ(1, write());
    EXPECT_GE(10U, sessions().size()) << "one that looks, and one that cleans up";
    EXPECT_TRUE(holds("the server could not be asked", said())) << said();
}

TEST_F(Write, ReportsAListingTooLongToSearch)
{
    constexpr int kNames = 5000;
    for (int i = 0; i < kNames; ++i) {
        writeFile(served(std::to_string(kNames + i) + std::string(240, 'a')), "");
    }
    misbehave("rm=reply:550 read-only");
    misbehave("DELE=reply:550 read-only");
    EXPECT_EQ(1, write());
    EXPECT_EQ(0U, leftBehind());
    EXPECT_TRUE(holds("the server could not be asked; look, and remove them by hand", said()));
}

TEST_F(Write, ReportsContentThatCameBackDifferent)
{
    misbehave("6/DATA#2=claim-after:1000");
    EXPECT_EQ(1, write());
    EXPECT_TRUE(nothingIsLeft());
    EXPECT_EQ("fails 0", outlookOf("upload")) << said();
}

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
    EXPECT_EQ(3, write("/", {"--timeout", "4"})) << said();
    const std::string operation = GetParam().operation;
    EXPECT_EQ("unknown ", outlookOf(operation));
    EXPECT_EQ("tried, and it did not finish within 12 seconds", reasonOf(operation));
    EXPECT_EQ("fail: given up: the " + operation + " did not finish within 12 seconds", roundTrip());
    EXPECT_TRUE(nothingIsLeft());
    EXPECT_EQ(0U, leftBehind()) << said();
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

// Of the session in which the file is sent.
constexpr char kUploadStalls[] = "6/DONE#2=stall";

class WriteInterrupted : public Write, public testing::WithParamInterface<int>
{
};

TEST_P(WriteInterrupted, CleansUpAndEndsByTheSignal)
{
    misbehave("RETR=stall");
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password, variables());
    watch.wait();
    process.signal(GetParam());
    EXPECT_EQ(-GetParam(), process.wait());
    EXPECT_TRUE(nothingIsLeft());
    EXPECT_TRUE(nothingIsLeftHere());
    EXPECT_EQ(0U, nlohmann::json::parse(process.out())["leftBehind"].size());
    EXPECT_EQ("", process.err());
}

TEST_F(Write, ContinuesAfterAnIgnoredSignal)
{
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password, variables(), SIGHUP);
    watch.wait();
    process.signal(SIGHUP);
    EXPECT_EQ(0, process.wait());
    EXPECT_TRUE(nothingIsLeft());
}

TEST_P(WriteInterrupted, NamesWhatItCannotRemove)
{
    misbehave("RETR=stall");
    misbehave("DELE=reply:550 read-only");
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password);
    watch.wait();
    process.signal(GetParam());
    EXPECT_EQ(-GetParam(), process.wait());
    EXPECT_FALSE(nothingIsLeft());
    EXPECT_EQ(0U, process.err().find("sftpclient: left behind: ftp://localhost:")) << process.err() << process.out();
}

// A session sends its file in the seventh session; the eighth cleans up.
TEST_F(Write, NamesTheSessionsFileTooIfItCannotLook)
{
    misbehave("RETR=stall");
    misbehave("8/USER=drop");
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password);
    watch.wait("-session");
    process.signal(SIGTERM);
    EXPECT_EQ(-SIGTERM, process.wait());
    const std::string said = process.err();
    const std::string beginning = "sftpclient: perhaps left behind: files whose names contain ";
    ASSERT_EQ(0U, said.find(beginning)) << said << process.out();
    const std::string name = said.substr(beginning.size(), said.size() - beginning.size() - 1);
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

TEST_F(Write, LeavesNoLocalFileWhenItIsKilled)
{
    misbehave("RETR=stall");
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password, variables());
    watch.wait();
    process.signal(SIGKILL);
    EXPECT_EQ(-SIGKILL, process.wait());
    EXPECT_TRUE(nothingIsLeftHere());
}

TEST_F(Write, DoesNotConfirmAStepWhoseProcessWasKilled)
{
    misbehave(kUploadStalls);
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password, variables());
    watch.wait();
    kill(process.child(), SIGKILL);
    EXPECT_EQ(3, report(process)) << said();
    EXPECT_EQ("tried, and it ended without a result", reasonOf("upload"));
    EXPECT_EQ("fail: given up: the upload ended without a result", roundTrip());
    EXPECT_TRUE(nothingIsLeft());
}

TEST_F(Write, BoundsTheMemoryForAListing)
{
    misbehave(kUploadStalls);
    serve();
    const FileWatch watch(served(""));
    DoctorProcess process(arguments(url("/")), config.password, variables());
    watch.wait();
    const std::string library = "/proc/" + std::to_string(process.child());
    EXPECT_TRUE(holds("Max file size             67108864 ", contentOf(library + "/limits")));
    const std::string status = contentOf(library + "/status");
    const unsigned long long ignored = std::stoull(status.substr(status.find("SigIgn:") + 7), nullptr, 16);
    EXPECT_NE(0U, ignored >> (SIGXFSZ - 1) & 1U) << "a full file is a failure to be told";
}

INSTANTIATE_TEST_SUITE_P(BySignal, WriteInterrupted, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(Write, IsNotTriedIfTheDirectoryWouldBeLeftBehind)
{
    serve();
    DoctorProcess process(arguments(url("/missing/")), config.password);
    process.wait();
    EXPECT_TRUE(holds("the directory is not there", process.out()));
    EXPECT_TRUE(nothingIsLeft());
}

TEST_F(Write, NeedsConsentForAnFtpUrl)
{
    serve();
    DoctorProcess process({url("/"), "--user", "backup", "--ca", "none", "--write"}, config.password);
    EXPECT_EQ(2, process.wait());
    EXPECT_TRUE(holds("add --clear-login to agree", process.err()));
    EXPECT_TRUE(sessions().empty());
}

} // namespace
