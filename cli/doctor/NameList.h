#ifndef SFTPCLIENT_CLI_DOCTOR_NAMELIST_H
#define SFTPCLIENT_CLI_DOCTOR_NAMELIST_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace doctor {

/// What a server sent as the listing of a directory. It answers questions; the names themselves are not shown.
class NameList
{
public:
    NameList() = default;
    /// One that was taken apart.
    NameList(std::string bytes, bool isCut) : m_listing(std::move(bytes)), m_isCut(isCut) {}

    /// Takes in a piece as it arrives. What is beyond 1 MiB is left out: a server may list without end.
    void append(const char* bytes, std::size_t count);

    const std::string& bytes() const { return m_listing; }
    std::size_t lines() const;
    bool holds(const std::string& file) const;
    /// The names that this is a part of.
    std::vector<std::string> holding(const std::string& part) const;
    /// Whether something was left out.
    bool isCut() const { return m_isCut; }

private:
    std::string m_listing;
    bool m_isCut = false;
};

} // namespace doctor

#endif
