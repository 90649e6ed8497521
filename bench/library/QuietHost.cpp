// Host services that do nothing, so that what is measured is the library. The records are composed all the same: that
// is the library's part.

#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

LogProxy::LogProxy(int /*level*/, const std::string& /*module*/, unsigned long /*requestId*/,
                   const std::string& /*function*/, unsigned int /*line*/)
{
}

LogProxy::~LogProxy() = default;

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 0;
    return identifier;
}

ThreadRequestId TSP_RequestID;

int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool defaultValue)
{
    return defaultValue ? 1 : 0;
}

SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& /*cert*/) { return SECURITYSS_SUCCESS; }
