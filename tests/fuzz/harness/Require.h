#ifndef FUZZ_HARNESS_REQUIRE_H
#define FUZZ_HARNESS_REQUIRE_H

#include <cstdio>
#include <cstdlib>

/// Ends the program, as a finding, unless `holds`.
inline void require(bool holds, const char* what)
{
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "This must hold, but does not: %s\n", what));
        std::abort();
    }
}

#endif
