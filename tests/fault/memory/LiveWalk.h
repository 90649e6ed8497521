#ifndef MEMORY_HARNESS_LIVEWALK_H
#define MEMORY_HARNESS_LIVEWALK_H

#include "support/Codes.h"
#include "support/Live.h"
#include "support/Memory.h"

#include <functional>
#include <string>

/// In place of a result: the piece threw `std::bad_alloc`.
constexpr int kThrown = -1000;

/// The outcome of a piece of the library that ran out of memory.
struct Outcome
{
    int result = 0;
    bool ranShort = false;
    Lines records;
};

/// A piece of the library, to be run many times.
struct Piece
{
    std::function<void()> prepare;
    std::function<int()> run;
    std::function<bool()> done; ///< whether it has done what a success claims
};

/// The base of the walks through the heap, with a real libcurl and a server: a piece is run over and over, each time
/// with the next allocation refused, until a run gets by without coming to it.
///
/// Of each run is asserted that what was allocated is freed and what was opened is closed, that the password is in no
/// block of the library's when it is freed, and that a success has done what it claims.
class LiveWalk : public Live
{
protected:
    LiveWalk();

    using Check = std::function<void(const Outcome&)>;

    /// Walks, and checks each outcome. First and last, with nothing refused, the piece must succeed.
    void walk(const Piece& piece, memory::Whose whose, memory::Shortage shortage, const Check& check);

    /// The records of a run with enough memory, for comparison.
    const Lines& usualRecords() const { return m_usualRecords; }

    /// What libcurl sent to the server in the last session.
    const testserver::Transcript& lastSession() const { return m_lastSession; }

private:
    Outcome run(const Piece& piece, unsigned nth, memory::Whose whose, memory::Shortage shortage);

    Lines m_usualRecords;
    testserver::Transcript m_lastSession;
};

#endif
