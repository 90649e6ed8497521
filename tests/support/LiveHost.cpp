#include "support/LiveHost.h"

#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

#include <atomic>
#include <utility>

namespace {

struct Record
{
    unsigned long identifier;
    std::string text;
};

std::atomic<int> certAuthSwitch{1};
thread_local std::vector<Record> records;

} // namespace

namespace live {

void setCertAuthSwitch(int value) { certAuthSwitch = value; }

std::vector<std::string> takeRecords()
{
    std::vector<std::string> texts;
    for (Record& record : std::exchange(records, {})) {
        texts.push_back(std::move(record.text));
    }
    return texts;
}

std::vector<std::string> takeRecordsWithIdentifiers()
{
    std::vector<std::string> texts;
    for (const Record& record : std::exchange(records, {})) {
        texts.push_back(std::to_string(record.identifier) + " " + record.text);
    }
    return texts;
}

} // namespace live

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
    : m_level(level), m_module(module), m_requestId(requestId), m_function(function), m_line(line)
{
}

LogProxy::~LogProxy()
{
    records.push_back({m_requestId, std::to_string(m_level) + " " + m_function + ": " + str().substr(1)});
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
