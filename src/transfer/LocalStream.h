#ifndef SFTPCLIENT_TRANSFER_LOCALSTREAM_H
#define SFTPCLIENT_TRANSFER_LOCALSTREAM_H

#include <cstdio>
#include <memory>
#include <tuple>

struct LocalStreamClose
{
    void operator()(FILE* stream) const { std::ignore = fclose(stream); }
};

/// A local file, open for one operation.
using LocalStream = std::unique_ptr<FILE, LocalStreamClose>;

/// Makes every write reach the file at once, so that a full disk shows while libcurl can still report it, not in the
/// closing that nobody checks.
inline void writeUnbuffered(const LocalStream& stream) { std::ignore = setvbuf(stream.get(), nullptr, _IONBF, 0); }

#endif
