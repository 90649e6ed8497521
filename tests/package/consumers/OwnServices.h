// A host's own services: records go to standard error.
#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

#include <iostream>

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy()
{
    std::cerr << "own record: " << m_level << " " << m_module << " " << m_requestId << " " << m_function << " " << str()
              << "\n";
}

ThreadRequestId TSP_RequestID;

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 7;
    return identifier;
}

#ifndef WITHOUT_CONFIG_READER
int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool defaultValue)
{
    return defaultValue ? 1 : 0;
}
#endif

SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& /*cert*/) { return SECURITYSS_SUCCESS; }
