#ifndef SFTPCLIENT_CLI_BASE_USAGEERROR_H
#define SFTPCLIENT_CLI_BASE_USAGEERROR_H

#include <stdexcept>

/// The command cannot be run as it was given; the text says what to change. Nothing has been sent to a server.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

#endif
