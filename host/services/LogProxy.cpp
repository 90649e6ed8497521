#include <LogProxy.h>

#include "HostLog.h"
#include "OtherServices.h"

#include <exception>

namespace {

[[maybe_unused]] const bool anotherIsUsed = tellOfOtherServices();

} // namespace

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

// It may be destroyed while another exception passes: a second one would end the host.
LogProxy::~LogProxy()
{
    if (bad()) { // some of the text is missing: a stream does not throw when memory is out
        HostLog::instance().countLost("out of memory");
        return;
    }
    try {
        const std::string written = str();
        std::string_view text = written;
        if (!text.empty() && text.front() == '0') {
            text.remove_prefix(1);
        }
        HostLog::instance().write({m_level, m_module, m_requestId, m_function, m_line, text});
    } catch (const std::exception&) {
        HostLog::instance().countLost("out of memory");
    }
}
