#ifndef SUPPORT_OPENHANDLES_H
#define SUPPORT_OPENHANDLES_H

/// The libcurl handles that this process has made and not cleaned up. Those that libcurl makes for itself do not count.
int openHandles();

#endif
