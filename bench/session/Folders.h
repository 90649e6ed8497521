#ifndef BENCH_SESSION_FOLDERS_H
#define BENCH_SESSION_FOLDERS_H

#include "Arguments.h"

/// All files of the local folder to the URL's directory, on so many threads and as many connections. Gives the first
/// code that is no success, or 0.
int uploadFolder(const Arguments& arguments);

/// All files of the URL's directory into the local folder, likewise.
int downloadFolder(const Arguments& arguments);

#endif
