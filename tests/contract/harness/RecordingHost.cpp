#include "harness/RecordingHost.h"

#include "harness/Journal.h"
#include "harness/Memory.h"

#include <ConfigReader.h>
#include <LogProxy.h>

#include <memory>
#include <new>
#include <streambuf>
#include <vector>

namespace recording {

Host& host()
{
    static Host instance;
    return instance;
}

namespace {

// Takes each insertion as one piece, where a string buffer would run them together.
class Pieces : public std::streambuf
{
public:
    const std::string& text() const { return m_text; }

protected:
    std::streamsize xsputn(const char* characters, std::streamsize count) override
    {
        if (memory::unmet("a record's text")) {
            throw std::bad_alloc(); // the stream keeps it and goes bad
        }
        const memory::Pause pause;
        if (m_begun) {
            m_text += '|';
        }
        m_begun = true;
        m_text.append(characters, static_cast<std::size_t>(count));
        return count;
    }

    int_type overflow(int_type character) override
    {
        const char piece = traits_type::to_char_type(character);
        xsputn(&piece, 1);
        return character;
    }

private:
    bool m_begun = false;
    std::string m_text;
};

// Records can be open inside each other: the innermost is the last.
std::vector<std::unique_ptr<Pieces>>& openRecords()
{
    static std::vector<std::unique_ptr<Pieces>> records;
    return records;
}

} // namespace
} // namespace recording

using namespace recording;

LogProxy::LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                   unsigned int line)
{
    if (memory::unmet("a record")) {
        throw std::bad_alloc();
    }
    const memory::Pause pause;
    m_level = level;
    m_module = module;
    m_requestId = requestId;
    m_function = function;
    m_line = line;
    openRecords().push_back(std::make_unique<Pieces>());
    std::ios::rdbuf(openRecords().back().get());
}

LogProxy::~LogProxy()
{
    const memory::Pause pause;
    journal::note("log " + std::to_string(m_level) + " " + m_module + " " + std::to_string(m_requestId) + " " +
                  m_function + (m_line == 0 ? " (no line)" : "") + ": " + openRecords().back()->text() +
                  (bad() ? " (bad)" : ""));
    openRecords().pop_back();
}

unsigned long& ThreadRequestId::get() { return host().requestId; }

ThreadRequestId TSP_RequestID;

int ConfigReader::getInt(const std::string& section, const std::string& key, bool defaultValue)
{
    const memory::Pause pause;
    journal::note("config " + section + "/" + key + (defaultValue ? " default true" : " default false"));
    return host().certAuthSwitch;
}

SecuritySS_RC SecuritySS::enrichSSL(void* /*curl*/, std::string& cert)
{
    const memory::Pause pause;
    journal::note("enrichSSL " + cert);
    return host().enriched;
}
