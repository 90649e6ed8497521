// Both clients over lines that delay, lose, split, limit and break: what they send, and what comes of it.
#include "harness/LongLine.h"
#include "harness/Place.h"

#include "support/Live.h"
#include "support/Relay.h"

#include <algorithm>
#include <future>
#include <map>
#include <ostream>

namespace {

using namespace std::chrono_literals;

// The commands of each operation, each of which waits for the reply to the one before: by `SFtpClient`, and by a
// session on a new connection and on a kept one.
struct Commands
{
    const char* core;
    const char* cold;
    const char* warm;
};

const std::map<Operation, Commands> kCommands = {
    {Operation::Test,
     {"AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE LIST QUIT", "AUTH USER PASS PBSZ PROT PWD CWD NOOP", "NOOP"}},
    {Operation::Upload,
     {"USER PASS PWD CWD EPSV TYPE STOR QUIT", "AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE STOR SIZE RNFR RNTO",
      "EPSV STOR SIZE RNFR RNTO"}},
    {Operation::List,
     {"AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE NLST QUIT", "AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE NLST",
      "EPSV NLST"}},
    {Operation::Download,
     {"USER PASS PWD CWD MDTM TYPE SIZE REST QUIT AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE SIZE RETR QUIT",
      "AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE SIZE RETR", "EPSV SIZE RETR"}},
    {Operation::Rename,
     {"AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE LIST RENAME QUIT", "AUTH USER PASS PBSZ PROT PWD CWD RNFR RNTO",
      "RNFR RNTO"}},
    {Operation::Delete,
     {"AUTH USER PASS PBSZ PROT PWD CWD EPSV TYPE LIST RM QUIT", "AUTH USER PASS PBSZ PROT PWD CWD DELE", "DELE"}},
};

struct Case
{
    const char* name;
    Line line;
    std::size_t bytes = 100000; ///< of the file that moves
};

Line inPieces(std::size_t longest)
{
    Line line;
    line.segment = longest;
    line.splits = true;
    return line;
}

Line limited(std::uint64_t rate)
{
    Line line;
    line.rate = rate;
    return line;
}

const Case kCases[] = {
    {"FiftyMilliseconds", longLine(50ms, 0)},
    {"FiftyMillisecondsAndLosses", longLine(50ms, kOnePercent)},
    {"TwoHundredMilliseconds", longLine(200ms, 0)},
    {"TwoHundredMillisecondsAndLosses", longLine(200ms, kOnePercent)},
    {"SingleBytes", inPieces(1), 1000},
    {"PiecesOfRandomSize", inPieces(1460)},
    {"TwoHundredKilobytesASecond", limited(200000)},
};

std::ostream& operator<<(std::ostream& stream, const Case& each) { return stream << each.name; }

class OverALine : public Live, public testing::WithParamInterface<Case>
{
protected:
    OverALine() { trustByDefault(authority.certificatePem()); }

    struct Ran
    {
        Place::Outcome first;
        Place::Outcome second; ///< over the session's kept connection
    };

    // In any thread.
    Ran ran(Client client, Operation operation)
    {
        testserver::ServerConfig behind;
        behind.announcedPort = [this](std::uint16_t port) { return m_relay.before(port); };
        Place place(authority, behind, GetParam().bytes);
        place.aim(m_relay.before(place.port()));
        Ran both;
        both.first = place.run(client, operation);
        if (client == Client::Session) {
            both.second = place.run(client, operation);
        }
        return both;
    }

private:
    Relay m_relay{GetParam().line};
};

void expectDone(const std::string& words, const Place::Outcome& outcome)
{
    EXPECT_EQ(0, outcome.code) << outcome.errorText;
    EXPECT_TRUE(outcome.isDone);
    EXPECT_EQ(words, outcome.words);
}

} // namespace

// All at once, because they do nothing but wait.
TEST_P(OverALine, EachOperationIsDoneWithTheSameCommands)
{
    std::map<std::pair<Client, Operation>, std::future<Ran>> all;
    for (const Client client : kClients) {
        for (const Operation operation : kOperations) {
            all[{client, operation}] =
                std::async(std::launch::async, [this, client, operation] { return ran(client, operation); });
        }
    }
    for (auto& [which, pending] : all) {
        SCOPED_TRACE(nameOf(which.first) + ", " + nameOf(which.second));
        const Commands& commands = kCommands.at(which.second);
        const Ran both = pending.get();
        expectDone(which.first == Client::Core ? commands.core : commands.cold, both.first);
        if (which.first == Client::Session) {
            expectDone(commands.warm, both.second);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, OverALine, testing::ValuesIn(kCases),
                         [](const auto& each) { return std::string(each.param.name); });

class BrokenLine : public Live
{
};

TEST_F(BrokenLine, ADownloadOverALineThatBreaksFails)
{
    Line line;
    line.resetAfter = 50000;
    Relay relay(line);
    testserver::ServerConfig behind;
    behind.announcedPort = [&relay](std::uint16_t port) { return relay.before(port); };
    Place place(authority, behind, 100000);
    place.aim(relay.before(place.port()));
    trustByDefault(authority.certificatePem());
    EXPECT_EQ(CURLE_RECV_ERROR, place.run(Client::Core, Operation::Download).code);
    EXPECT_GT(50000, place.bytesLeft()) << "the core leaves what has arrived";
    EXPECT_EQ(CURLE_RECV_ERROR, place.run(Client::Session, Operation::Download).code);
    EXPECT_EQ(-1, place.bytesLeft()) << "a session leaves nothing";
}

// One line of the table for each operation: commands of the library, of a session, and of one with a kept connection.
TEST(LinesDocument, HasTheNumberOfCommands)
{
    const auto count = [](const std::string& words) {
        return std::to_string(1 + std::count(words.begin(), words.end(), ' ')) + " | ";
    };
    const Lines document = linesOf(contentOf(TROUBLESHOOTING_DOCUMENT));
    for (const auto& [operation, words] : kCommands) {
        const std::string row =
            "| " + nameOf(operation) + " | " + count(words.core) + count(words.cold) + count(words.warm);
        EXPECT_TRUE(hasLine(row.substr(0, row.size() - 1), document));
    }
}
