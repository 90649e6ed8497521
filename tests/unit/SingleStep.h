#ifndef UNIT_HARNESS_SINGLESTEP_H
#define UNIT_HARNESS_SINGLESTEP_H

#include <string>

/// What a function stores into a text that it overwrites with zero bytes.
struct Overwriting
{
    unsigned passes = 0;         ///< how often all characters became zero
    bool fromFirstToLast = true; ///< in each pass, and nothing but zeros was stored
    std::string obstacle;        ///< why it could not be watched; empty when it was
};

/// Runs `overwrite` in a child process, one instruction at a time. Whenever all characters are zero they are put back,
/// so that a further pass shows.
/// REQUIRES: a text on the heap, of whole machine words, without zero bytes.
Overwriting watchOverwriting(std::string& text, void (*overwrite)(std::string&));

#endif
