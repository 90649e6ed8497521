#include <LogProxy.h>

#include "HostLog.h"
#include "RecordText.h"

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy()
{
    try {
        HostLog::instance().write(m_level, recordText(m_module, m_requestId, m_function, m_line, str()));
    } catch (...) {
        // It may be destroyed while another exception passes: a second one would end the host.
        HostLog::reportLostRecord();
    }
}
