#ifndef FUZZ_HARNESS_SCRIPTMUTATOR_H
#define FUZZ_HARNESS_SCRIPTMUTATOR_H

#include <cstddef>

/// How many characters stand before the script in a target's inputs; each target defines it.
extern const std::size_t kChoices;

#endif
