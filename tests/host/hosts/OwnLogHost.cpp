#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

#include <cstdio>

// A host with a log of its own, which takes the other services as they are: what they have to say goes to its log.
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
