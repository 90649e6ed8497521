#ifndef EXAMPLES_HEEDMODES_H
#define EXAMPLES_HEEDMODES_H

#include "support/Process.h"

#include <unistd.h>

/// The setup of a program that, also as root, may only read what the modes of files allow.
inline ProcessSetup heedingModes(ProcessSetup setup)
{
    if (geteuid() == 0) {
        const Words without = {"setpriv", "--bounding-set", "-dac_override,-dac_read_search"};
        setup.words.insert(setup.words.begin(), without.begin(), without.end());
    }
    return setup;
}

#endif
