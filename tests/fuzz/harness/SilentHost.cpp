// Host services that say nothing: a fuzzer writes no log. The switch lets transfers go on without a certificate.
#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy() = default;

ThreadRequestId TSP_RequestID;

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 0;
    return identifier;
}

int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool /*defaultValue*/)
{
    return 0;
}

SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& /*cert*/) { return SECURITYSS_SUCCESS; }
