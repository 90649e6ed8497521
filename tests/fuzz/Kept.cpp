// Two calls of one SFtpSession, so that the second may use the first one's connection, with a server whose replies are
// the fuzzer's: the first byte chooses the operation and the options, the rest is the script of the playback, once for
// each connection.
#include "harness/Client.h"
#include "harness/Require.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Name = std::string;

void requireName(const Name& name)
{
    require(!name.empty() && name != "." && name != ".." && name.find('/') == Name::npos &&
                name.find('\0') == Name::npos,
            "an entry's name leads nowhere else");
}

int list(SFtpSession& session, const SFtpRequest& request, std::string& errorText)
{
    std::vector<RemoteEntry> entries;
    const int code = session.ListEntries(request, entries, errorText);
    require(code == 0 || entries.empty(), "a failure leaves the entries alone");
    for (const RemoteEntry& entry : entries) {
        requireName(entry.name);
        require(entry.size >= -1, "a size is a number of bytes, or unknown");
    }
    return code;
}

int operate(unsigned choice, SFtpSession& session, SFtpRequest request, std::string& errorText)
{
    const std::string directory = request.remotePath;
    RemoteEntry entry;
    std::stringstream content(std::string(3000, 's'));
    request.remotePath += "a.bak";
    switch (choice % 10) { // "0" is the first, for inputs written by hand
    case 0:
        request.remotePath = directory;
        return list(session, request, errorText);
    case 1:
        return session.StatEntry(request, entry, errorText);
    case 2:
        return session.DownLoadTo(request, content, errorText);
    case 3:
        return session.DownLoadSFtpFile(request, errorText);
    case 4:
        return session.UploadFrom(request, content, errorText);
    case 5:
        request.localPath = fileToSend();
        return session.UploadFileToSFtpServer(request, errorText);
    case 6:
        request.remotePath = directory;
        request.localPath = "new.bak";
        return session.ReNameSFtpFile(request, errorText);
    case 7:
        request.remotePath = directory;
        return session.DelSFtpFile(request, errorText);
    case 8:
        return session.MakeSFtpDir(request, errorText);
    default:
        return session.TestSConnect(request, errorText);
    }
}

SessionOptions optionsFor(unsigned choice)
{
    SessionOptions options;
    options.requireTls = choice / 10 % 2 != 0;
    options.resume = choice / 20 % 2 != 0;
    options.compareHostName = false;
    return options;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    runAgainst(std::string(reinterpret_cast<const char*>(data + 1), size - 1), [data](const SFtpRequest& request) {
        const unsigned choice = data[0] + 240U - '0';
        SFtpSession session(optionsFor(choice));
        for (int i = 0; i < 2; ++i) {
            std::string errorText = "untouched";
            const int code = operate(choice, session, request, errorText);
            require(code >= 0 && code < CURL_LAST, "the result is one of libcurl's");
            require((code == 0) == (errorText == "untouched"), "a failure says what it is, and success nothing");
            require(errorText.find("password") == std::string::npos, "the password is in no text");
        }
    });
    return 0;
}
