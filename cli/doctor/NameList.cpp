#include "doctor/NameList.h"

#include <algorithm>
#include <sstream>

namespace doctor {

constexpr std::size_t kLongestListing = std::size_t{1} << 20;

void NameList::append(const char* bytes, std::size_t count)
{
    const std::size_t taken = std::min(count, kLongestListing - m_listing.size());
    m_listing.append(bytes, taken);
    m_isCut = m_isCut || taken < count;
}

std::size_t NameList::lines() const
{
    const auto ends = static_cast<std::size_t>(std::count(m_listing.begin(), m_listing.end(), '\n'));
    return m_listing.empty() || m_listing.back() == '\n' ? ends : ends + 1;
}

bool NameList::holds(const std::string& file) const
{
    const std::vector<std::string> names = holding(file);
    return std::find(names.begin(), names.end(), file) != names.end();
}

// Some servers put the directory before each name.
std::vector<std::string> NameList::holding(const std::string& part) const
{
    std::vector<std::string> names;
    std::istringstream lines(m_listing); // not all of them at once: there may be a million
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        const std::string name = line.substr(line.rfind('/') + 1);
        if (name.find(part) != std::string::npos) {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace doctor
