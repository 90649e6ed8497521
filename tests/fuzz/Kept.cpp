// Two calls of one SFtpSession, so that the second may use the first one's connection, with a server whose replies are
// the fuzzer's: the first two characters choose the operations, the third the options, the rest is the script of the
// playback (harness/Script.h).
#include "harness/Client.h"
#include "harness/Require.h"
#include "harness/ScriptMutator.h"
#include "harness/SessionCalls.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace {

enum Options
{
    kRequireTls = 1,
    kResume = 2,
    kImplicitTls = 4,
    kPause = 8,
    kInPlace = 64
};

SessionOptions optionsFor(unsigned choice)
{
    SessionOptions options;
    options.requireTls = (choice & kRequireTls) != 0;
    options.resume = (choice & kResume) != 0;
    options.atomicUpload = (choice & kInPlace) == 0;
    options.compareHostName = false;
    options.syncDownload = false; // what a disk does is not tested here
    // Waits take no time, but a session looks around ten times a second.
    options.connectTimeout = options.replyTimeout = options.stallTimeout = std::chrono::seconds(2);
    return options;
}

void callTwice(const uint8_t* data, SFtpRequest request, Network& network)
{
    const unsigned options = data[2];
    SFtpSession session(optionsFor(options));
    if ((options & kImplicitTls) != 0) {
        request.remotePath.replace(0, 3, "ftps");
    }
    for (int i = 0; i < 2; ++i) {
        std::string errorText = "untouched";
        const int code = operate((data[i] + 255U - '0') % kSessionOperations, session, request, errorText);
        require(code >= 0 && code < CURL_LAST, "the result is one of libcurl's");
        require((code == 0) == (errorText == "untouched"), "a failure says what it is, and success nothing");
        require(errorText.find("password") == std::string::npos, "the password is in no text");
        if ((options & kPause) != 0) {
            network.pass(50 * kMillisecond); // so that the server may send what nobody waits for, or close
        }
    }
}

} // namespace

const std::size_t kChoices = 3;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < kChoices) {
        return 0;
    }
    emptyFolder(); // its folder is made before descriptors are counted
    runAgainst(std::string(reinterpret_cast<const char*>(data + kChoices), size - kChoices),
               [data](const SFtpRequest& request, Network& network) { callTwice(data, request, network); });
    return 0;
}
