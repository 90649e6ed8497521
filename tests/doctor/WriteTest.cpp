// "doctor --write": what it tries, and what it shows.
#include "harness/Write.h"

#include <algorithm>

namespace {

TEST_F(Write, LeavesNothingBehindOnSuccess)
{
    EXPECT_EQ(0, write());
    for (const char* const operation : {"download", "upload", "rename", "delete", "list", "test"}) {
        EXPECT_EQ("works 0", outlookOf(operation)) << operation;
    }
    EXPECT_EQ("ok: a small file was sent, listed, fetched, renamed and removed", roundTrip());
    EXPECT_EQ(roundTrip(), roundTrip("session's round trip"));
    expectNothingLeft();
}

TEST_F(Write, TakesEightConnectionsAndFourLogins)
{
    EXPECT_EQ(0, write());
    const std::vector<Lines> all = sessions();
    EXPECT_EQ(8U, all.size());
    std::ptrdiff_t logins = 0;
    for (const Lines& session : all) {
        logins += std::count_if(session.begin(), session.end(),
                                [](const std::string& line) { return line.compare(0, 6, "> PASS") == 0; });
    }
    EXPECT_EQ(4, logins);
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
    EXPECT_EQ(0U, outlookOf(GetParam().operation).find(GetParam().outlook)) << said;
    expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(AtAStep, WriteFailing, testing::ValuesIn(kFailures),
                         [](const testing::TestParamInfo<Failure>& of) { return std::string(of.param.id); });

// The session in which SFtpSession tries its operations.
TEST_F(Write, TriesASessionsListingToo)
{
    misbehave("7/NLST=reply:550 not now");
    EXPECT_EQ(0, write()) << said;
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
    EXPECT_EQ(1, write()) << said;
    nlohmann::json upload = predictionOf("upload");
    for (const nlohmann::json& each : {upload, upload["session"]}) {
        EXPECT_EQ("fails", each["outlook"]);
        EXPECT_EQ(GetParam().code, each["code"]);
        EXPECT_EQ(std::string("tried, and the server refuses it (") + GetParam().reply + ")", each["reason"]);
        EXPECT_EQ(GetParam().remedy, each["remedy"]);
    }
    expectLeftBehind(0);
}

constexpr Refusal kRefusals[] = {
    {"552 over quota", 25, "Free space at the server for that user, or have the quota raised."},
    {"550 no permission", 25, "Let the user write, rename and delete in that directory, at the server."},
    {"421 too many", 28, "Ask the server's administrator what its log says; it may limit the connections."},
};

INSTANTIATE_TEST_SUITE_P(With, WriteRefused, testing::ValuesIn(kRefusals),
                         [](const testing::TestParamInfo<Refusal>& of) { return std::string(of.param.reply, 3); });

TEST_F(Write, ReportsContentThatCameBackDifferent)
{
    misbehave("6/DATA#2=claim-after:1000");
    EXPECT_EQ(1, write());
    EXPECT_EQ("fails 0", outlookOf("upload")) << said;
    expectNothingLeft();
}

TEST_F(Write, IsNotTriedIfTheDirectoryWouldBeLeftBehind)
{
    EXPECT_EQ(1, write("/missing/"));
    EXPECT_EQ("warn: not made: the directory is not there, and an upload would leave it behind", roundTrip());
    expectNothingLeft();
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
