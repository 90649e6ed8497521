#include "LiveWalk.h"

#include "support/Codes.h"
#include "support/OpenHandles.h"
#include "support/RecordingHost.h"

#include <curl/curl.h>
#include <openssl/crypto.h>

#include <filesystem>
#include <iterator>
#include <new>

// The host services of the live tests, here with memory that can run out.
void live::setCertAuthSwitch(int value) { recording::host().certAuthSwitch = value; }

Lines live::takeRecords() { return recording::takeRecords(); }

namespace {

std::ptrdiff_t openDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

} // namespace

LiveWalk::LiveWalk()
{
    // One CA in place of the machine's hundred and more, which libcurl reads for each TLS connection.
    trustByDefault(authority.certificatePem());
    config.keepTranscripts = false;
    config.onSessionEnd = [this](const testserver::Transcript& transcript) { m_lastSession = transcript; };
    serve();
}

Outcome LiveWalk::run(const Piece& piece, unsigned nth, memory::Whose whose, memory::Shortage shortage)
{
    piece.prepare();
    m_lastSession.clear();
    recording::takeRecords();
    OPENSSL_thread_stop(); // what OpenSSL keeps for each thread: errors and random numbers
    const std::ptrdiff_t descriptors = openDescriptors();
    Outcome outcome;
    {
        const memory::Watch watch(request.password.c_str(), whose);
        memory::runShort(nth, shortage);
        try {
            outcome.result = piece.run();
        } catch (const std::bad_alloc&) {
            outcome.result = kThrown;
        }
        const memory::Pause pause;
        OPENSSL_thread_stop();
        outcome.ranShort = memory::firstUnmet() != nullptr;
        EXPECT_EQ(0U, memory::livingBlocks());
        EXPECT_EQ(0U, memory::freedWithSecret());
    }
    // This comes first: the server would wait for a handle that was not cleaned up.
    if (openHandles() != 0) {
        ADD_FAILURE() << openHandles() << " libcurl handles were not cleaned up";
        return outcome;
    }
    sessions();
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(outcome.result != 0 || piece.done()) << "a success of nothing";
    outcome.records = recording::takeRecords();
    return outcome;
}

void LiveWalk::walk(const Piece& piece, memory::Whose whose, memory::Shortage shortage, const Check& check)
{
    // Makes libcurl, OpenSSL and the standard streams allocate what they keep.
    piece.prepare();
    ASSERT_EQ(nameOf(CURLE_OK), nameOf(piece.run()));
    sessions(); // the count includes the server's descriptors

    const Outcome usual = run(piece, 0, whose, shortage);
    ASSERT_EQ(nameOf(CURLE_OK), nameOf(usual.result));
    m_usualRecords = usual.records;
    ASSERT_FALSE(HasFailure());
    for (unsigned nth = 1;; ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth) + " refused");
        const Outcome outcome = run(piece, nth, whose, shortage);
        if (!outcome.ranShort) {
            EXPECT_EQ(nameOf(CURLE_OK), nameOf(outcome.result));
            EXPECT_TRUE(sameLines(m_usualRecords, outcome.records));
            ASSERT_LT(1U, nth) << "nothing was ever allocated: the walk has seen nothing";
            RecordProperty("allocations", static_cast<int>(nth - 1));
            return;
        }
        check(outcome);
        ASSERT_TRUE(!HasFailure() || sameLines(m_usualRecords, outcome.records))
            << "the walk ends at the first failure";
    }
}
