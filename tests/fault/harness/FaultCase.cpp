#include "harness/FaultCase.h"

#include <random>
#include <utility>

namespace {

std::string usualPath(Operation operation)
{
    switch (operation) {
    case Operation::Download:
    case Operation::Checked:
        return "/dir/a.bak";
    case Operation::Upload:
        return "/dir/up.bak";
    default:
        return "/dir/";
    }
}

template <typename Value>
FaultCase with(const FaultCase& row, Value FaultCase::*member, Value value)
{
    FaultCase changed = row;
    changed.*member = std::move(value);
    return changed;
}

} // namespace

FaultCase::FaultCase(std::string theName, Operation theOperation, std::vector<std::string> theFaults,
                     std::set<int> theCodes)
    : name(std::move(theName)), operation(theOperation), faults(std::move(theFaults)), codes(std::move(theCodes)),
      path(usualPath(theOperation))
{
}

FaultCase FaultCase::because(const std::string& text) const { return with(*this, &FaultCase::why, text); }

FaultCase FaultCase::basedOn(Basis source) const { return with(*this, &FaultCase::basis, source); }

FaultCase FaultCase::waiting(unsigned seconds) const { return with(*this, &FaultCase::responseTimeout, seconds); }

FaultCase FaultCase::leaving(const std::string& text) const
{
    return with(*this, &FaultCase::left, std::optional<Left>(Left{text, std::nullopt, false, std::nullopt}));
}

FaultCase FaultCase::leaving(std::size_t bytes) const
{
    return with(*this, &FaultCase::left, std::optional<Left>(Left{"", bytes, false, std::nullopt}));
}

FaultCase FaultCase::leavingAtMost(const std::string& text) const
{
    return with(*this, &FaultCase::left, std::optional<Left>(Left{text, std::nullopt, true, std::nullopt}));
}

FaultCase FaultCase::leavingAtMost(std::size_t bytes) const
{
    return with(*this, &FaultCase::left, std::optional<Left>(Left{"", bytes, true, std::nullopt}));
}

FaultCase FaultCase::leavingAfter(int code, const std::string& text) const
{
    return with(*this, &FaultCase::left, std::optional<Left>(Left{text, std::nullopt, false, code}));
}

FaultCase FaultCase::leavingAfter(int code, std::size_t bytes) const
{
    return with(*this, &FaultCase::left, std::optional<Left>(Left{"", bytes, false, code}));
}

FaultCase FaultCase::at(const std::string& remote) const { return with(*this, &FaultCase::path, remote); }

FaultCase FaultCase::on(void (*change)(Scene&)) const { return with(*this, &FaultCase::arrange, change); }

FaultCase FaultCase::hastened() const { return with(*this, &FaultCase::hasten, true).beyondTheTool(); }

FaultCase FaultCase::beyondTheTool() const { return with(*this, &FaultCase::replayed, false); }

std::ostream& operator<<(std::ostream& stream, const FaultCase& row)
{
    stream << row.name;
    for (const std::string& fault : row.faults) {
        stream << " " << fault.substr(0, 80);
    }
    return stream;
}

std::string begin(std::size_t count)
{
    std::mt19937_64 random(20261121);
    std::string bytes;
    bytes.reserve(count + sizeof(std::uint64_t));
    while (bytes.size() < count) {
        const std::uint64_t value = random();
        bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
    }
    bytes.resize(count);
    return bytes;
}
