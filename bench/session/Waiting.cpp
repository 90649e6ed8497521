#include "Waiting.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iostream>
#include <string>
#include <thread>

namespace {

int transferBothWays(SFtpSession& session, SFtpRequest request, std::string& errorText)
{
    const auto dropped = [](const char* /*bytes*/, std::size_t /*count*/) { return true; };
    if (const int code = session.DownLoadTo(request, dropped, errorText)) {
        return code;
    }
    std::size_t left = 100000;
    request.remotePath += ".copy";
    return session.UploadFrom(
        request,
        [&left](char* bytes, std::size_t count) {
            const std::size_t given = std::min(count, left);
            std::fill_n(bytes, given, 'x');
            left -= given;
            return given;
        },
        errorText);
}

} // namespace

int keepConnections(const Arguments& arguments)
{
    SessionOptions options;
    options.maxConnections = static_cast<unsigned>(arguments.threads);
    options.idleTimeout = std::chrono::hours(1);
    SFtpSession session(options);
    SFtpRequest request = arguments.request;
    for (int i = 0; i < arguments.threads; ++i) {
        std::string errorText;
        if (const int code = transferBothWays(session, request, errorText)) {
            std::cerr << errorText << "\n";
            return code;
        }
        // Another text of the same trust: the next call finds no connection of its kind.
        request.caCert += '\n';
    }
    std::this_thread::sleep_for(std::chrono::seconds(arguments.calls));
    return 0;
}

int waitForStall(const Arguments& arguments)
{
    SessionOptions options;
    options.stallTimeout = std::chrono::seconds(arguments.calls);
    SFtpSession session(options);
    std::string errorText;
    const int code = session.DownLoadSFtpFile(arguments.request, errorText);
    if (code == CURLE_OPERATION_TIMEDOUT) {
        return 0;
    }
    std::cerr << "The download did not stall; it ended with " << code << ": " << errorText << "\n";
    return 1;
}
