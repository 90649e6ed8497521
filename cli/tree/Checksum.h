#ifndef SFTPCLIENT_CLI_TREE_CHECKSUM_H
#define SFTPCLIENT_CLI_TREE_CHECKSUM_H

#include <SFtpSession.h>

#include <string>

/// The checksum of an open file from its beginning, as `RemoteChecksum::digits` has it. Throws `TreeFailure` (26) where
/// it cannot be read.
std::string checksumOf(int descriptor, ChecksumKind kind);

#endif
