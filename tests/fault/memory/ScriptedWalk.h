#ifndef MEMORY_HARNESS_SCRIPTEDWALK_H
#define MEMORY_HARNESS_SCRIPTEDWALK_H

#include "contract/Contract.h"

#include <openssl/ssl.h>

#include <functional>
#include <memory>
#include <set>
#include <string>

/// In place of a result: the piece threw `std::bad_alloc`.
constexpr int kThrown = -1000;

/// The outcome of a piece of the library that ran out of memory.
struct Outcome
{
    int result = 0;            ///< the piece's own, or kThrown
    const char* who = nullptr; ///< whose need went unmet first; null where there was enough
    unsigned livingBlocks = 0;
    Lines journal;
};

/// The base of the walks against the scripted libcurl: a piece of the library is run over and over, each time with the
/// next of its needs unmet, until a run gets by without coming to it.
///
/// The scripted libcurl obeys the options that were set: no URL, no transfer; no login, no access; the hook's and the
/// write callback's results end the transfer.
class ScriptedWalk : public Contract
{
protected:
    ScriptedWalk();

    using Piece = std::function<int(const SFtpRequest&)>;
    using Check = std::function<void(const Outcome&)>;

    /// Runs the piece with one need after the other unmet, and checks each outcome. First and last, with nothing unmet,
    /// the piece must come to `expected`.
    void walk(const Piece& piece, int expected, memory::Shortage shortage, const Check& check);

    /// Expects that everything was released and the password wiped.
    void expectReleased(const Outcome& outcome) const;

    /// Expects a record that the run with enough memory does not write.
    void expectTold(const Outcome& outcome) const;

    // A context that is made and freed outside the watch.
    struct FreeContext
    {
        void operator()(SSL_CTX* context) const;
    };
    using Context = std::unique_ptr<SSL_CTX, FreeContext>;

    static Context makeContext();

private:
    CURLcode transfer(const scripted::Handle& handle) const;
    Outcome run(const Piece& piece, unsigned nth, memory::Shortage shortage);

    const Context m_context = makeContext();
    std::set<std::string> m_usualRecords;
};

#endif
