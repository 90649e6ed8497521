// What is measured of sessions: one SFtpSession for a process, in which an operation runs so many times, or on so many
// threads.

#include "Arguments.h"
#include "Folders.h"
#include "Options.h"
#include "Waiting.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

// One call after the other; the first failure ends them.
template <typename Call>
int repeated(const Arguments& arguments, const Call& call)
{
    SFtpSession session(sessionOptions());
    SFtpRequest request = arguments.request;
    std::string errorText;
    int code = 0;
    for (int i = 0; i < arguments.calls && code == 0; ++i) {
        code = call(session, request, errorText);
    }
    if (code != 0) {
        std::cerr << errorText << "\n";
    }
    return code;
}

template <int (SFtpSession::*operation)(const SFtpRequest&, std::string&)>
int repeatedOperation(const Arguments& arguments)
{
    return repeated(arguments, [](SFtpSession& session, const SFtpRequest& request, std::string& errorText) {
        return (session.*operation)(request, errorText);
    });
}

// To and fro.
int renames(const Arguments& arguments)
{
    return repeated(arguments, [](SFtpSession& session, SFtpRequest& request, std::string& errorText) {
        const int code = session.ReNameSFtpFile(request, errorText);
        std::swap(request.localPath, request.remoteFileName);
        return code;
    });
}

int sizes(const Arguments& arguments)
{
    return repeated(arguments, [](SFtpSession& session, const SFtpRequest& request, std::string& errorText) {
        RemoteEntry entry;
        return session.StatEntry(request, entry, errorText);
    });
}

using Program = int (*)(const Arguments& arguments);

const std::map<std::string, Program>& programs()
{
    static const std::map<std::string, Program> kPrograms = {
        {"test", repeatedOperation<&SFtpSession::TestSConnect>},
        {"download", repeatedOperation<&SFtpSession::DownLoadSFtpFile>},
        {"upload", repeatedOperation<&SFtpSession::UploadFileToSFtpServer>},
        {"list", repeatedOperation<&SFtpSession::Listsftpdir>},
        {"delete", repeatedOperation<&SFtpSession::DelSFtpFile>},
        {"rename", renames},
        {"size", sizes},
        {"upload-folder", uploadFolder},
        {"download-folder", downloadFolder},
        {"keep", keepConnections},
        {"stall", waitForStall},
    };
    return kPrograms;
}

int run(const Arguments& arguments)
{
    const auto found = programs().find(arguments.operation);
    if (found != programs().end()) {
        return found->second(arguments);
    }
    std::vector<std::string> known;
    for (const auto& each : programs()) {
        known.push_back(each.first);
    }
    refuseOperation(arguments.operation, known);
}

} // namespace

int main(int argc, char** argv)
try {
    const Arguments arguments = readArguments({argv + 1, argv + argc});
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const int result = run(arguments);
    curl_global_cleanup();
    return result;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return EXIT_FAILURE;
}
