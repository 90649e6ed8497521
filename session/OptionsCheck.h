#ifndef SFTPCLIENT_SESSION_OPTIONSCHECK_H
#define SFTPCLIENT_SESSION_OPTIONSCHECK_H

#include <SFtpSession.h>

namespace session {

/// Throws `std::invalid_argument`, whose text names the field, for options that cannot be.
void checkOptions(const SessionOptions& options);

} // namespace session

#endif
