// The calls that only a session has, over lines that delay and lose: what they send, and what comes of it.
#include "harness/LongLine.h"
#include "harness/Place.h"

#include "support/Live.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>
#include <ostream>

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kBytes = 100000;
constexpr std::time_t kTime = 1700000000;

struct SessionCall
{
    const char* name;
    Operation like; ///< the call has the same files, and the same effect
    Place::Call call;
    const char* cold; ///< its commands on a new connection
    const char* warm; ///< and on a kept one
};

int listEntries(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    std::vector<RemoteEntry> entries;
    const int code = session.ListEntries(request, entries, errorText);
    EXPECT_EQ(1u, entries.size());
    EXPECT_TRUE(!entries.empty() && entries[0].name == "a.bak" && entries[0].size == kBytes);
    writeFile(request.localPath, "a.bak\n");
    return code;
}

int statEntry(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    RemoteEntry entry;
    request.remotePath += "a.bak";
    const int code = session.StatEntry(request, entry, errorText);
    EXPECT_EQ(EntryKind::File, entry.kind);
    EXPECT_EQ(kBytes, entry.size);
    return code;
}

int setModified(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    request.remotePath += "a.bak";
    return session.SetModified(request, std::chrono::system_clock::from_time_t(kTime), errorText);
}

int readModified(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    std::chrono::system_clock::time_point modified;
    request.remotePath += "a.bak";
    const int code = session.ReadModified(request, modified, errorText);
    EXPECT_EQ(1767225600, std::chrono::system_clock::to_time_t(modified)) << "1 January 2026, as of all files there";
    return code;
}

int readChecksum(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    RemoteChecksum checksum;
    request.remotePath += "a.bak";
    const int code = session.ReadChecksum(request, checksum, errorText);
    EXPECT_EQ(ChecksumKind::Sha256, checksum.kind);
    EXPECT_EQ(64u, checksum.digits.size());
    return code;
}

int makeDirectory(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    request.remotePath += "made";
    return session.MakeSFtpDir(request, errorText);
}

int removeDirectory(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    request.remotePath += "made";
    return session.RemoveSFtpDir(request, errorText);
}

int downloadTo(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    std::ofstream out(request.localPath, std::ios::binary);
    return session.DownLoadTo(request, out, errorText);
}

int uploadFrom(SFtpSession& session, SFtpRequest& request, std::string& errorText)
{
    std::ifstream in(request.localPath, std::ios::binary);
    return session.UploadFrom(request, in, errorText);
}

const SessionCall kCalls[] = {
    {"ListEntries", Operation::List, listEntries, "AUTH USER PASS PBSZ PROT PWD CWD FEAT EPSV TYPE MLSD", "EPSV MLSD"},
    {"StatEntry", Operation::Test, statEntry, "AUTH USER PASS PBSZ PROT PWD CWD MDTM TYPE SIZE REST", "MDTM SIZE REST"},
    {"ReadModified", Operation::Test, readModified, "AUTH USER PASS PBSZ PROT PWD CWD MDTM", "MDTM"},
    {"SetModified", Operation::Test, setModified, "AUTH USER PASS PBSZ PROT PWD CWD FEAT MFMT", "MFMT"},
    {"ReadChecksum", Operation::Test, readChecksum, "AUTH USER PASS PBSZ PROT PWD CWD FEAT OPTS HASH", "OPTS HASH"},
    {"MakeSFtpDir", Operation::Test, makeDirectory, "AUTH USER PASS PBSZ PROT PWD CWD MKD", "MKD"},
    {"RemoveSFtpDir", Operation::Test, removeDirectory, "AUTH USER PASS PBSZ PROT PWD CWD RMD", "RMD"},
    {"DownLoadTo", Operation::Download, downloadTo, "AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE SIZE RETR",
     "EPSV SIZE RETR"},
    {"UploadFrom", Operation::Upload, uploadFrom, "AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE STOR SIZE RNFR RNTO",
     "EPSV STOR SIZE RNFR RNTO"},
};

struct Distance
{
    const char* name;
    Line line;
};

const Distance kDistances[] = {
    {"FiftyMilliseconds", longLine(50ms, 0)},
    {"FiftyMillisecondsAndLosses", longLine(50ms, kOnePercent)},
    {"TwoHundredMilliseconds", longLine(200ms, 0)},
    {"TwoHundredMillisecondsAndLosses", longLine(200ms, kOnePercent)},
};

std::ostream& operator<<(std::ostream& stream, const Distance& each) { return stream << each.name; }

class SessionOverALine : public Live, public testing::WithParamInterface<Distance>
{
protected:
    // Both times the same call; its directory is there only where it is to be removed.
    void expectDone(const SessionCall& each)
    {
        SCOPED_TRACE(each.name);
        testserver::ServerConfig behind;
        behind.announcedPort = [this](std::uint16_t port) { return m_relay.before(port); };
        behind.checksums = {"HASH"};
        Place place(authority, behind, kBytes);
        place.aim(m_relay.before(place.port()));
        const bool removes = each.name == std::string("RemoveSFtpDir");
        for (const char* const words : {each.cold, each.warm}) {
            std::filesystem::remove(place.served("d/made"));
            if (removes) {
                std::filesystem::create_directory(place.served("d/made"));
            }
            const Place::Outcome outcome = place.call(each.like, each.call);
            EXPECT_EQ(0, outcome.code) << outcome.errorText;
            EXPECT_TRUE(outcome.isDone);
            EXPECT_EQ(words, outcome.words);
            EXPECT_EQ(each.name == std::string("MakeSFtpDir"), std::filesystem::exists(place.served("d/made")));
        }
    }

private:
    Relay m_relay{GetParam().line};
};

} // namespace

// All at once, because they do nothing but wait.
TEST_P(SessionOverALine, EachCallIsDoneWithTheSameCommands)
{
    std::vector<std::future<void>> all;
    for (const SessionCall& each : kCalls) {
        all.push_back(std::async(std::launch::async, [this, &each] { expectDone(each); }));
    }
    for (std::future<void>& each : all) {
        each.get();
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, SessionOverALine, testing::ValuesIn(kDistances),
                         [](const auto& each) { return std::string(each.param.name); });

// One line of the table for each call.
TEST(SessionCallsDocument, HasTheNumberOfCommands)
{
    const auto count = [](const std::string& words) {
        return std::to_string(1 + std::count(words.begin(), words.end(), ' ')) + " |";
    };
    const Lines document = linesOf(contentOf(TROUBLESHOOTING_DOCUMENT));
    for (const SessionCall& each : kCalls) {
        EXPECT_TRUE(
            hasLine(std::string("| `") + each.name + "` | – | " + count(each.cold) + " " + count(each.warm), document));
    }
}
