#ifndef SFTPCLIENT_TRANSFER_LOCALSTREAM_H
#define SFTPCLIENT_TRANSFER_LOCALSTREAM_H

#include <cstdio>
#include <memory>

struct LocalStreamClose
{
    void operator()(FILE* stream) const { static_cast<void>(fclose(stream)); }
};

/// A local file, open for one operation.
using LocalStream = std::unique_ptr<FILE, LocalStreamClose>;

/// Makes every write reach the file at once, so that a full disk shows while libcurl can still report it, not in the
/// closing that nobody checks.
inline void writeUnbuffered(const LocalStream& stream) { static_cast<void>(setvbuf(stream.get(), nullptr, _IONBF, 0)); }

#endif
