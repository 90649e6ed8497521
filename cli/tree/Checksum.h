#ifndef SFTPCLIENT_CLI_TREE_CHECKSUM_H
#define SFTPCLIENT_CLI_TREE_CHECKSUM_H

#include <SFtpSession.h>

#include <functional>
#include <string>

using IsEnding = std::function<bool()>;

/// The checksum of an open file from its beginning, as `RemoteChecksum::digits` has it. Throws `TreeFailure` (26) where
/// it cannot be read, and (42) where the run ends meanwhile.
std::string checksumOf(int descriptor, ChecksumKind kind, const IsEnding& isEnding);

#endif
