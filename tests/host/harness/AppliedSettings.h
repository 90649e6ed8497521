#ifndef SFTPCLIENT_TESTS_HOST_APPLIEDSETTINGS_H
#define SFTPCLIENT_TESTS_HOST_APPLIEDSETTINGS_H

#include <HostLog.h>

/// The log's settings as long as this object lives; those from the beginning afterwards.
class AppliedSettings
{
public:
    explicit AppliedSettings(const HostLogSettings& settings) { HostLog::instance().apply(settings); }
    ~AppliedSettings() { HostLog::instance().apply({}); }
    AppliedSettings(const AppliedSettings&) = delete;
    AppliedSettings& operator=(const AppliedSettings&) = delete;
};

#endif
