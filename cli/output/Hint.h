#ifndef SFTPCLIENT_CLI_OUTPUT_HINT_H
#define SFTPCLIENT_CLI_OUTPUT_HINT_H

#include "base/ServerReplies.h"

#include <curl/curl.h>

#include <string>

/// How an operation is run.
enum class Way
{
    AsHost, // through SFtpClient
    Session,
    SshSession // of which no hint about TLS may be given
};

/// What is behind a result, by what the server said last, or else most often; and what to do about it. Empty where
/// nothing can be said in general.
std::string hintFor(Way way, CURLcode result, const Reply& reply);

#endif
