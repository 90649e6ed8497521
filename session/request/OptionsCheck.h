#ifndef SFTPCLIENT_SESSION_OPTIONSCHECK_H
#define SFTPCLIENT_SESSION_OPTIONSCHECK_H

#include <SFtpSession.h>
#include <transfer/WipeString.h>

#include <utility>

namespace session {

/// The options, whose secrets do not stay in memory that is given back.
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

/// Throws `std::invalid_argument`, whose text names the field, for options that cannot be.
void checkOptions(const SessionOptions& options);

} // namespace session

#endif
