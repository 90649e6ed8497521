#ifndef SUPPORT_RECORDEDFILES_H
#define SUPPORT_RECORDEDFILES_H

#include <string>

/// The C library's file calls, noted while the memory is watched and then carried out, or failed where told.
namespace recorded {

struct Files
{
    std::string cannotOpen; ///< the path whose fopen fails
    bool statFails = false;
};

Files& files();

} // namespace recorded

#endif
