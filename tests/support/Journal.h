#ifndef SUPPORT_JOURNAL_H
#define SUPPORT_JOURNAL_H

#include "support/Lines.h"

/// Everything that the code under test does to the world, one line each, in order. Lines of its own tell when the
/// credentials came into memory ("credentials joined"), when they left it ("credentials wiped") and when a block
/// was freed with the password in it ("PASSWORD FREED").
namespace journal {

void clear();

/// Adds a line, outside the memory watch.
void note(const std::string& line);

/// Adds what remains to be noted at the end of the operation, and returns the lines.
Lines take();

} // namespace journal

#endif
