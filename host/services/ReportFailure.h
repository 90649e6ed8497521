#ifndef SFTPCLIENT_HOST_REPORTFAILURE_H
#define SFTPCLIENT_HOST_REPORTFAILURE_H

#include <initializer_list>
#include <string_view>

/// Writes a record of level 4 and module "SFtpClientHost" through the process's `LogProxy`, whosever that is; its text
/// is the pieces together. When memory is out there is no record: a service does not throw because of its report.
void reportFailure(const char* function, unsigned int line, std::initializer_list<std::string_view> pieces) noexcept;

#endif
