// Host services for walks through the heap. A record may find no memory while it is made and written, which is the
// library's to bear; its completion, where nothing may throw, is out of the watch.

#include "harness/Heap.h"
#include "harness/LiveHost.h"

#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

#include <utility>

namespace {

int certAuthSwitch = 1;
std::vector<std::string> records;

} // namespace

namespace live {

void setCertAuthSwitch(int value) { certAuthSwitch = value; }

std::vector<std::string> takeRecords() { return std::exchange(records, {}); }

} // namespace live

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy()
{
    const heap::Pause pause;
    records.push_back(std::to_string(m_level) + " " + m_function + ": " + str());
}

unsigned long& ThreadRequestId::get()
{
    static unsigned long identifier = 0;
    return identifier;
}

ThreadRequestId TSP_RequestID;

int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool /*defaultValue*/)
{
    return certAuthSwitch;
}

SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& /*cert*/) { return SECURITYSS_SUCCESS; }
