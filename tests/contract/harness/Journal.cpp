#include "harness/Journal.h"

#include "harness/Memory.h"

#include <utility>

namespace {

std::vector<std::string> lines;
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

void note(std::string line)
{
    noteCredentials();
    lines.push_back(std::move(line));
}

std::vector<std::string> take()
{
    noteCredentials();
    return std::exchange(lines, {});
}

} // namespace journal
