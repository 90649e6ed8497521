#include "ReportFailure.h"

#include <LogProxy.h>

#include <exception>

namespace {

constexpr int kFailure = 4;

} // namespace

void reportFailure(const char* function, unsigned int line, std::initializer_list<std::string_view> pieces) noexcept
{
    try {
        LogProxy record(kFailure, "SFtpClientHost", TSP_RequestID.get(), function, line);
        record << 0;
        for (const std::string_view piece : pieces) {
            record << piece;
        }
    } catch (const std::exception&) {
        return;
    }
}
