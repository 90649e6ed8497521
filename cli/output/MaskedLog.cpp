#include "output/MaskedLog.h"

#include "base/ThrowErrno.h"

#include <HostLog.h>

#include <boost/algorithm/string/replace.hpp>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>
#include <string>

namespace {

std::string contentsOf(int descriptor)
{
    std::string text;
    std::array<char, 4096> block = {};
    lseek(descriptor, 0, SEEK_SET);
    for (;;) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count <= 0) {
            return text;
        }
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

// Time, function and line are the log's own: masked, they would say something else where a password is a number.
std::string masked(const std::string& record, const PasswordMask& mask)
{
    const std::string::size_type function = record.find("():"); // a JSON object has none
    const std::string::size_type begin =
        function == std::string::npos ? 0 : std::min(record.find(' ', function), record.size());
    const std::string text = record.substr(begin);
    const std::string unescaped = boost::replace_all_copy(text, "\\\\", "\\"); // before the log has escaped it
    const std::string hidden = mask.hiddenIn(unescaped);
    return record.substr(0, begin) + (hidden == unescaped ? text : hidden);
}

} // namespace

MaskedLog::MaskedLog(const PasswordMask& mask) : m_mask(mask), m_records(memfd_create("log", MFD_CLOEXEC))
{
    if (!m_records.isOpen()) {
        throwErrno("the log's records cannot be kept");
    }
    HostLog::instance().setDescriptor(m_records.get());
}

MaskedLog::~MaskedLog()
{
    HostLog::instance().setDescriptor(STDERR_FILENO);
    std::istringstream records(contentsOf(m_records.get()));
    for (std::string record; std::getline(records, record);) {
        std::cerr << masked(record, m_mask) << "\n";
    }
}
