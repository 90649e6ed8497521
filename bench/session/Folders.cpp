#include "Folders.h"

#include "Options.h"

#include <SFtpSession.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

// Each thread takes the next name, until there is none or a call has failed.
template <typename Call>
int forEach(const std::vector<std::string>& names, int threads, const Call& call)
{
    std::atomic<std::size_t> next{0};
    std::atomic<int> result{0};
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&] {
            for (std::size_t at = next++; at < names.size() && result == 0; at = next++) {
                const int code = call(names[at]);
                int success = 0;
                result.compare_exchange_strong(success, code);
            }
        });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
    return result;
}

SFtpRequest forFile(const Arguments& arguments, const std::string& name)
{
    SFtpRequest request = arguments.request;
    request.remotePath += name;
    request.localPath += "/" + name;
    return request;
}

} // namespace

int uploadFolder(const Arguments& arguments)
{
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(arguments.request.localPath)) {
        names.push_back(file.path().filename());
    }
    SFtpSession session(sessionOptions());
    return forEach(names, arguments.threads, [&](const std::string& name) {
        std::string errorText;
        return session.UploadFileToSFtpServer(forFile(arguments, name), errorText);
    });
}

int downloadFolder(const Arguments& arguments)
{
    SFtpSession session(sessionOptions());
    std::vector<RemoteEntry> entries;
    std::string errorText;
    if (const int code = session.ListEntries(arguments.request, entries, errorText)) {
        std::cerr << errorText << "\n";
        return code;
    }
    std::vector<std::string> names;
    for (const RemoteEntry& entry : entries) {
        names.push_back(entry.name);
    }
    return forEach(names, arguments.threads, [&](const std::string& name) {
        std::string text;
        return session.DownLoadSFtpFile(forFile(arguments, name), text);
    });
}
