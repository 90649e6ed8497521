#ifndef CONTRACT_HARNESS_JOURNAL_H
#define CONTRACT_HARNESS_JOURNAL_H

#include <string>
#include <vector>

/// Everything that the code under test does to the world, one line each, in order. Lines of its own tell when the
/// credentials came into memory ("credentials joined"), when they left it ("credentials wiped") and when a block
/// was freed with the password in it ("PASSWORD FREED").
namespace journal {

void clear();

/// Adds a line. The caller has paused the memory watch.
void note(std::string line);

/// Adds what the end of the operation left to tell, and gives the lines.
std::vector<std::string> take();

} // namespace journal

#endif
