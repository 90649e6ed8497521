#ifndef SFTPCLIENT_SESSION_OPTIONSCHECK_H
#define SFTPCLIENT_SESSION_OPTIONSCHECK_H

#include <SFtpSession.h>
#include <transfer/CallResources.h>

#include <utility>

namespace session {

/// The options; their secrets are wiped at the end.
struct Options : SessionOptions
{
    explicit Options(SessionOptions&& options) : SessionOptions(std::move(options)) {}
    ~Options()
    {
        sftpWipeString(clientKey);
        sftpWipeString(proxy);
    }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
};

/// Throws `std::invalid_argument` for invalid options, with a text that names the field.
void checkOptions(const SessionOptions& options);

} // namespace session

#endif
