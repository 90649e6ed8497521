#include "support/Journal.h"

#include "support/Memory.h"

#include <utility>

namespace {

Lines lines;
bool held = false;
unsigned freed = 0;

void noteCredentials()
{
    if (memory::freedWithSecret() != freed) {
        freed = memory::freedWithSecret();
        lines.emplace_back("PASSWORD FREED");
    }
    if (memory::holdsSecret() != held) {
        held = !held;
        lines.emplace_back(held ? "credentials joined" : "credentials wiped");
    }
}

} // namespace

namespace journal {

void clear()
{
    lines.clear();
    held = false;
    freed = 0;
}

void note(const std::string& line)
{
    const memory::Pause pause;
    noteCredentials();
    lines.push_back(line);
}

Lines take()
{
    noteCredentials();
    return std::exchange(lines, {});
}

} // namespace journal
