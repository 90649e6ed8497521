#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

#include <cstdio>

// A host with its own log and the other ready services, which log there.
LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy() { std::printf("own log: %s%s\n", m_function.c_str(), str().c_str()); }

int main()
{
    std::string cert = "none";
    const bool refused = SecuritySS::enrichSSL(nullptr, cert) == SECURITYSS_FAILURE;
    return refused ? ConfigReader::getInt("General", "CertAuthSwitch", false) : 1;
}
