#ifndef SFTPCLIENT_CLI_OPERATION_UPLOADCHECK_H
#define SFTPCLIENT_CLI_OPERATION_UPLOADCHECK_H

#include <SFtpRequest.h>

#include <cstdint>
#include <optional>
#include <string>

/// What the server says about the size of a file.
struct RemoteSize
{
    std::optional<std::int64_t> bytes;
    std::string whyNot; // where it does not tell the bytes
};

/// Asks for the size of the file that `request` sent, over a connection that is as safe as the upload's: TLS for an
/// ftps: URL, with libcurl's own trust store. Only a proper number in an FTP server's answer counts: what libcurl makes
/// of others depends on its release. The limits are those of `ObservedTransfers`.
RemoteSize askSize(const SFtpRequest& request);

/// The bytes that a reply to SIZE tells ("213 1048576"), or nothing.
std::optional<std::int64_t> sizeInReply(const std::string& reply);

/// Whether a size can be compared: a transfer as text (";type=a") changes it.
bool canCompareSize(const std::string& url);

#endif
