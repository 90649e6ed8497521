#include "harness/LiveWalk.h"

#include <OpenHandles.h>

#include <openssl/crypto.h>

#include <filesystem>
#include <iterator>
#include <new>

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

Outcome LiveWalk::run(const Piece& piece, unsigned nth, heap::Whose whose, heap::Shortage shortage)
{
    piece.prepare();
    m_lastSession.clear();
    live::takeRecords();
    OPENSSL_thread_stop(); // what OpenSSL keeps for each thread: errors and random numbers
    const std::ptrdiff_t descriptors = openDescriptors();
    Outcome outcome;
    {
        heap::Watch watch(nth, shortage, whose, request.password.c_str());
        try {
            outcome.result = piece.run();
        } catch (const std::bad_alloc&) {
            outcome.result = kThrown;
        }
        const heap::Pause pause;
        OPENSSL_thread_stop();
        outcome.ranShort = watch.ranShort();
        EXPECT_EQ(0U, watch.livingBlocks());
        EXPECT_EQ(0U, watch.freedWithSecret());
    }
    // First of all: the server waits for a handle that was not cleaned up.
    if (openHandles() != 0) {
        ADD_FAILURE() << openHandles() << " libcurl handles were not cleaned up";
        return outcome;
    }
    sessions();
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(outcome.result != 0 || piece.done()) << "a success of nothing";
    outcome.records = live::takeRecords();
    return outcome;
}

void LiveWalk::walk(const Piece& piece, heap::Whose whose, heap::Shortage shortage, const Check& check)
{
    // Makes what libcurl, OpenSSL and the standard streams make once and keep.
    piece.prepare();
    ASSERT_EQ(0, piece.run());
    sessions(); // the descriptors of the server, too, are counted

    const Outcome usual = run(piece, 0, whose, shortage);
    ASSERT_EQ(0, usual.result);
    m_usualRecords = usual.records;
    ASSERT_FALSE(HasFailure());
    for (unsigned nth = 1;; ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth) + " refused");
        const Outcome outcome = run(piece, nth, whose, shortage);
        if (!outcome.ranShort) {
            EXPECT_EQ(0, outcome.result);
            EXPECT_EQ(m_usualRecords, outcome.records);
            ASSERT_LT(1U, nth) << "nothing was ever allocated: the walk has seen nothing";
            RecordProperty("allocations", static_cast<int>(nth - 1));
            return;
        }
        check(outcome);
        ASSERT_FALSE(HasFailure()) << testing::PrintToString(outcome.records);
    }
}
