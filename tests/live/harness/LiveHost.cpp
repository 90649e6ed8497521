#include "harness/LiveHost.h"

#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

#include <atomic>
#include <mutex>
#include <utility>

namespace {

std::atomic<int> certAuthSwitch{1};
std::mutex mutex;
std::vector<std::string> records;

} // namespace

namespace live {

void setCertAuthSwitch(int value) { certAuthSwitch = value; }

std::vector<std::string> takeRecords()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(records, {});
}

} // namespace live

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy()
{
    const std::lock_guard<std::mutex> lock(mutex);
    records.push_back(std::to_string(m_level) + " " + m_function + ": " + str().substr(1));
}

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 0;
    return identifier;
}

ThreadRequestId TSP_RequestID;

int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool /*defaultValue*/)
{
    return certAuthSwitch;
}

SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& /*cert*/) { return SECURITYSS_SUCCESS; }
