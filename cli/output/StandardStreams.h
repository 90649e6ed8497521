#ifndef SFTPCLIENT_CLI_OUTPUT_STANDARDSTREAMS_H
#define SFTPCLIENT_CLI_OUTPUT_STANDARDSTREAMS_H

#include "base/Descriptor.h"

/// Opens what is closed of the three standard descriptors, on /dev/null: no other file then gets one of their numbers.
/// Each the wrong way round: reading input that was closed is to fail, not to find an empty file, and what is written
/// to output that was closed is to fail, not to be lost.
void openStandardDescriptors();

/// Points a standard stream's descriptor to /dev/null as long as this object lives: libcurl writes there what is not
/// for the user. Throws `std::system_error`.
/// REQUIRES: one thread alone, as the descriptor belongs to the process.
class Silenced
{
public:
    explicit Silenced(int descriptor);
    ~Silenced();
    Silenced(const Silenced&) = delete;
    Silenced& operator=(const Silenced&) = delete;

private:
    int m_descriptor;
    Descriptor m_original;
};

#endif
