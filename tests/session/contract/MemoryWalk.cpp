// A session that runs short of memory, in each operation and at each need.
#include "SessionWay.h"

#include <algorithm>
#include <filesystem>
#include <new>

namespace {

using memory::Shortage;

std::ptrdiff_t openDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

class SessionMemory : public SessionWay
{
protected:
    struct Outcome
    {
        int result;
        std::string who; ///< whose need went unmet first; empty where there was enough
        bool kept;       ///< whether the connection served again
    };

    // The call with its nth need unmet, and once more with enough.
    Outcome run(unsigned nth, Shortage shortage)
    {
        Outcome outcome = {0, "", true};
        prepare();
        errorText = "as it was";
        const std::ptrdiff_t descriptors = openDescriptors();
        const Lines lines = journalOfSession([&](SFtpSession& session) {
            memory::runShort(nth, shortage);
            outcome.result = resultOf(session);
            const memory::Pause pause;
            outcome.who = memory::firstUnmet() == nullptr ? "" : memory::firstUnmet();
            memory::runShort(0, Shortage::Once);
            expectNothingDamaged(outcome.result == kThrown || outcome.result == CURLE_OK);
            EXPECT_EQ(nameOf(CURLE_OK), nameOf(again(session))) << "afterwards: " << errorText;
        });
        EXPECT_EQ(descriptors, openDescriptors());
        outcome.kept = std::find(lines.begin(), lines.end(), "handle 2 made") == lines.end();
        return outcome;
    }

    // A success can lack two things: a record's words, which are the host's stream's and dropped by it, and the place
    // in which a connection is kept.
    void walk(Shortage shortage)
    {
        for (unsigned nth = 1;; ++nth) {
            const Outcome outcome = run(nth, shortage);
            if (outcome.who.empty()) {
                EXPECT_EQ(nameOf(CURLE_OK), nameOf(outcome.result));
                ASSERT_LT(30U, nth) << "fewer needs than there are options";
                return;
            }
            SCOPED_TRACE("need " + std::to_string(nth) + " unmet, of " + outcome.who);
            if (outcome.result == CURLE_OK) {
                EXPECT_TRUE(outcome.who == "a record's text" || !outcome.kept) << "a success without what it needs";
            } else if (outcome.result != kThrown) {
                EXPECT_EQ(nameOf(CURLE_OUT_OF_MEMORY), nameOf(outcome.result)) << errorText;
                EXPECT_EQ(0U, errorText.find(scripted::text(CURLE_OUT_OF_MEMORY))) << errorText;
            }
            ASSERT_FALSE(HasFailure()) << "the walk ends at the first failure";
        }
    }
};

} // namespace

TEST_P(SessionMemory, RunsShortOnce) { walk(Shortage::Once); }

TEST_P(SessionMemory, RunsShortForGood) { walk(Shortage::ForGood); }

INSTANTIATE_TEST_SUITE_P(Each, SessionMemory, testing::ValuesIn(allWays()), nameOfWay);

namespace {

class SessionLife : public SessionContract
{
};

} // namespace

TEST_F(SessionLife, BeginsWholeOrNotAtAll)
{
    options.proxy = "http://a-name-that-is-too-long-for-a-string-without-a-block-of-its-own";
    options.progress = [](const TransferProgress&) {};
    for (unsigned nth = 1;; ++nth) {
        const std::ptrdiff_t descriptors = openDescriptors();
        bool thrown = false;
        unsigned left = 0;
        bool enough = false;
        journalOf([&] {
            memory::runShort(nth, Shortage::ForGood);
            try {
                const SFtpSession session(options);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            enough = memory::firstUnmet() == nullptr;
            left = memory::livingBlocks();
        });
        EXPECT_EQ(!enough, thrown);
        EXPECT_EQ(0U, left);
        EXPECT_EQ(descriptors, openDescriptors());
        if (enough) {
            ASSERT_LT(2U, nth);
            break;
        }
    }
}

TEST_F(SessionLife, EndsWithoutMemory)
{
    const std::ptrdiff_t descriptors = openDescriptors();
    unsigned left = 0;
    const Lines lines = journalOf([&] {
        {
            SFtpSession session(options);
            for (const char* const scheme : {"ftp", "ftps", "sftp"}) {
                {
                    const memory::Pause pause;
                    request.remotePath = std::string(scheme) + "://server/";
                }
                EXPECT_EQ(0, session.TestSConnect(request, errorText));
            }
            memory::runShort(1, Shortage::ForGood);
        }
        left = memory::livingBlocks();
    });
    EXPECT_EQ(0U, left);
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(hasLine("handle 3 cleaned up", lines));
}
