// The lines that a server sends, through the callbacks that collect them.
#include "harness/Require.h"

#include "support/LiveHost.h"

#include "transfer/CurlSFtpResponse.h"

#include <cctype>
#include <cstdint>
#include <vector>

namespace {

bool isTrimmed(const std::string& text)
{
    return text.empty() || (std::isspace(static_cast<unsigned char>(text.front())) == 0 &&
                            std::isspace(static_cast<unsigned char>(text.back())) == 0);
}

std::vector<std::string> linesIn(const std::string& bytes)
{
    std::vector<std::string> lines;
    for (std::string::size_type begin = 0; begin < bytes.size();) {
        const std::string::size_type end = bytes.find('\n', begin);
        lines.push_back(bytes.substr(begin, end == std::string::npos ? end : end + 1 - begin));
        begin += lines.back().size();
    }
    return lines;
}

void collect(CurlSFtpResponse& response, std::vector<std::string> lines)
{
    for (std::string& line : lines) {
        require(CurlSFtpResponse::GetHeaderCallback(line.data(), 1, line.size(), &response) == line.size(),
                "each line is taken");
        require(CurlSFtpResponse::GetDataCallback(line.data(), line.size(), 1, &response) == line.size(),
                "all data is taken");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    CurlSFtpResponse response;
    collect(response, linesIn(bytes));
    require(response.recvData == bytes, "data is kept byte for byte");
    require(isTrimmed(response.statusText), "a status text has no blanks around it");
    for (const auto& header : response.headers) {
        require(isTrimmed(header.first) && header.first.find(':') == std::string::npos, "a header's name is a name");
        require(!header.second.empty(), "a header has a value");
        for (const std::string& value : header.second) {
            require(isTrimmed(value) && value.find(':') == std::string::npos, "a header's value holds no colon");
        }
    }

    CurlSFtpResponse again;
    collect(again, linesIn(bytes));
    require(again.statusCode == response.statusCode && again.statusText == response.statusText &&
                again.headers == response.headers,
            "the same lines give the same");
    live::takeRecords(); // otherwise they would grow forever
    return 0;
}
