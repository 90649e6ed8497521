#include "log/LogStatement.h"
#include "transfer/CurlSFtpResponse.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/lexical_cast.hpp>

#include <exception>
#include <vector>

size_t CurlSFtpResponse::GetDataCallback(void* ptr, size_t size, size_t nmemb, void* self)
try {
    if (ptr == nullptr || self == nullptr) {
        SFTP_LOG(kLogFailure, "ptr or self is null");
        return 0;
    }
    static_cast<CurlSFtpResponse*>(self)->RecieveData(std::string(static_cast<const char*>(ptr), size * nmemb));
    return size * nmemb;
} catch (const std::exception&) {
    // libcurl is C: an exception must not unwind it.
    return 0;
}

size_t CurlSFtpResponse::GetHeaderCallback(void* ptr, size_t size, size_t nmemb, void* self)
try {
    if (ptr == nullptr || self == nullptr) {
        SFTP_LOG(kLogFailure, "ptr or self is null");
        return 0;
    }
    const std::string line(static_cast<const char*>(ptr), size * nmemb);
    if (line.find(':') == std::string::npos) {
        static_cast<CurlSFtpResponse*>(self)->ParseStatusLine(line);
    } else {
        static_cast<CurlSFtpResponse*>(self)->RecieveHeader(line);
    }
    return size * nmemb;
} catch (const std::exception&) {
    // libcurl is C: an exception must not unwind it.
    return 0;
}

void CurlSFtpResponse::RecieveData(const std::string& data) { recvData.append(data); }

void CurlSFtpResponse::RecieveHeader(const std::string& line)
{
    std::vector<std::string> pieces;
    boost::split(pieces, line, boost::is_any_of(":"));
    // A value that holds a colon, such as a time of day, drops the line as a whole.
    if (pieces.size() != 2) {
        return;
    }
    boost::trim(pieces[0]);
    boost::trim(pieces[1]);
    headers[pieces[0]].insert(pieces[1]);
}

void CurlSFtpResponse::ParseStatusLine(const std::string& line)
{
    std::vector<std::string> pieces;
    boost::split(pieces, line, boost::is_any_of(" "));
    if (pieces.size() < 2) {
        return;
    }
    try {
        // The code is the second word: a line that begins with its code is logged as a failure.
        const uint32_t code = boost::lexical_cast<unsigned int>(boost::trim_copy(pieces[1]));
        std::string text = statusText; // never cleared: each line adds its words
        for (std::vector<std::string>::size_type i = 2; i < pieces.size(); ++i) {
            text.append(" ").append(pieces[i]);
        }
        boost::trim(text);
        // Nothing below can fail: a line takes effect whole or not at all.
        statusCode = code;
        statusText.swap(text);
    } catch (const std::exception&) {
        SFTP_LOG(kLogFailure, "Parse status line failed. Status line is " << line);
    }
}
