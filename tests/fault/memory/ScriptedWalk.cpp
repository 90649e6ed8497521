#include "ScriptedWalk.h"

#include "support/Certificates.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace {

bool isRecord(const std::string& line) { return line.rfind("log ", 0) == 0; }

std::ptrdiff_t countOf(const Lines& lines, const std::string& piece)
{
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.find(piece) != std::string::npos; });
}

} // namespace

void ScriptedWalk::FreeContext::operator()(SSL_CTX* context) const
{
    const memory::Pause pause;
    SSL_CTX_free(context);
}

ScriptedWalk::Context ScriptedWalk::makeContext()
{
    const memory::Pause pause;
    return Context(SSL_CTX_new(TLS_client_method()));
}

ScriptedWalk::ScriptedWalk()
{
    request.caCert = certificates::pemOf(certificates::make(1).get());
    writeFile(request.localPath, "content");
    scripted::curl().perform = [this](scripted::Handle& handle) { return transfer(handle); };
}

CURLcode ScriptedWalk::transfer(const scripted::Handle& handle) const
{
    if (handle.pointer(CURLOPT_URL) == nullptr) {
        return CURLE_URL_MALFORMAT;
    }
    const auto hook = reinterpret_cast<CURLcode (*)(void*, void*, void*)>(handle.pointer(CURLOPT_SSL_CTX_FUNCTION));
    if (hook != nullptr) {
        const CURLcode answer = hook(nullptr, m_context.get(), handle.pointer(CURLOPT_SSL_CTX_DATA));
        if (answer != CURLE_OK) {
            return answer;
        }
    }
    if (handle.pointer(CURLOPT_USERPWD) == nullptr) {
        return CURLE_LOGIN_DENIED;
    }
    if (handle.pointer(CURLOPT_WRITEFUNCTION) != nullptr) {
        constexpr std::size_t kBytes = 100;
        auto bytes = [] {
            const memory::Pause pause;
            return std::string(kBytes, 'x');
        };
        return handle.receive(bytes()) == kBytes ? CURLE_OK : CURLE_WRITE_ERROR;
    }
    return CURLE_OK;
}

Outcome ScriptedWalk::run(const Piece& piece, unsigned nth, memory::Shortage shortage)
{
    Outcome outcome;
    outcome.journal = journalOf([&] {
        memory::runShort(nth, shortage);
        try {
            outcome.result = piece(request);
        } catch (const std::bad_alloc&) {
            outcome.result = kThrown;
        }
        outcome.who = memory::firstUnmet();
        outcome.livingBlocks = memory::livingBlocks();
    });
    return outcome;
}

void ScriptedWalk::walk(const Piece& piece, int expected, memory::Shortage shortage, const Check& check)
{
    const Outcome usual = run(piece, 0, shortage);
    ASSERT_EQ(nameOf(expected), nameOf(usual.result));
    expectReleased(usual);
    std::copy_if(usual.journal.begin(), usual.journal.end(), std::inserter(m_usualRecords, m_usualRecords.end()),
                 isRecord);

    for (unsigned nth = 1;; ++nth) {
        const Outcome outcome = run(piece, nth, shortage);
        if (outcome.who == nullptr) {
            EXPECT_EQ(nameOf(expected), nameOf(outcome.result));
            EXPECT_TRUE(sameLines(usual.journal, outcome.journal)) << "what ran short has left something behind";
            ASSERT_LT(1U, nth) << "nothing was ever needed: the walk has seen nothing";
            RecordProperty("needs", static_cast<int>(nth - 1));
            return;
        }
        SCOPED_TRACE("need " + std::to_string(nth) + " unmet, of " + outcome.who);
        expectReleased(outcome);
        check(outcome);
        ASSERT_TRUE(!HasFailure() || sameLines(usual.journal, outcome.journal)) << "the walk ends at the first failure";
    }
}

void ScriptedWalk::expectReleased(const Outcome& outcome) const
{
    EXPECT_EQ(0U, outcome.livingBlocks);
    EXPECT_EQ(0, countOf(outcome.journal, "PASSWORD FREED"));
    EXPECT_EQ(countOf(outcome.journal, "credentials joined"), countOf(outcome.journal, "credentials wiped"));
    EXPECT_EQ(scripted::curl().made, countOf(outcome.journal, "cleaned up"));
    // The harness removes a stream, a buffer or a certificate from its list when it is released.
    for (const auto& [pointer, name] : scripted::curl().names) {
        EXPECT_EQ(&request.caCert, pointer) << name << " was not given back";
    }
}

void ScriptedWalk::expectTold(const Outcome& outcome) const
{
    EXPECT_TRUE(std::any_of(outcome.journal.begin(), outcome.journal.end(), [&](const std::string& line) {
        return isRecord(line) && m_usualRecords.count(line) == 0;
    }));
}
