#ifndef SFTPCLIENT_CLI_BASE_THROWERRNO_H
#define SFTPCLIENT_CLI_BASE_THROWERRNO_H

#include <cerrno>
#include <string>
#include <system_error>

/// Throws `std::system_error` with errno's reason after `what`.
[[noreturn]] inline void throwErrno(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

#endif
