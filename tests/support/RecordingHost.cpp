#include "support/RecordingHost.h"

#include "support/Journal.h"
#include "support/Memory.h"

#include <ConfigReader.h>
#include <LogProxy.h>

#include <memory>
#include <new>
#include <streambuf>
#include <utility>

namespace recording {

std::string Record::text() const
{
    std::string joined;
    for (const std::string& piece : pieces) {
        joined += (&piece == pieces.data() ? "" : "|") + piece;
    }
    return std::to_string(level) + " " + module + " " + std::to_string(requestId) + " " + function +
           (line == 0 ? " (no line)" : "") + ": " + joined + (bad ? " (bad)" : "");
}

Host& host()
{
    static Host instance;
    return instance;
}

void reset()
{
    host() = Host();
    journal::clear();
}

Lines takeRecords()
{
    journal::clear();
    Lines texts;
    for (const Record& record : std::exchange(host().records, {})) {
        texts.push_back(record.text());
    }
    return texts;
}

namespace {

void step(const std::string& name)
{
    if (host().onStep) {
        host().onStep(name);
    }
}

// Keeps each insertion apart, whereas a string buffer would join them.
class Pieces : public std::streambuf
{
public:
    Lines take() { return std::exchange(m_pieces, {}); }

protected:
    std::streamsize xsputn(const char* characters, std::streamsize count) override
    {
        if (memory::unmet("a record's text")) {
            throw std::bad_alloc(); // the stream keeps it and goes bad
        }
        const memory::Pause pause;
        m_pieces.emplace_back(characters, static_cast<std::size_t>(count));
        step("piece " + m_pieces.back());
        return count;
    }

    int_type overflow(int_type character) override
    {
        const char piece = traits_type::to_char_type(character);
        xsputn(&piece, 1);
        return character;
    }

private:
    Lines m_pieces;
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
    step("begin");
}

LogProxy::~LogProxy()
{
    const memory::Pause pause;
    step("end");
    host().records.push_back({m_level, std::move(m_module), m_requestId, std::move(m_function), m_line,
                              openRecords().back()->take(), bad()});
    journal::note("log " + host().records.back().text());
    openRecords().pop_back();
}

unsigned long& ThreadRequestId::get()
{
    const memory::Pause pause;
    step("identifier");
    return host().requestId;
}

ThreadRequestId TSP_RequestID;

int ConfigReader::getInt(const std::string& section, const std::string& key, bool defaultValue)
{
    const memory::Pause pause;
    journal::note("config " + section + "/" + key + (defaultValue ? " default true" : " default false"));
    return host().certAuthSwitch;
}

SecuritySS_RC SecuritySS::enrichSSL(void* curl, std::string& cert)
{
    const memory::Pause pause;
    host().enrichments.push_back({curl, &cert, cert});
    journal::note("enrichSSL " + cert);
    return host().enriched;
}
