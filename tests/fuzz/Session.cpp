// A whole call of SFtpClient with a server whose replies are the fuzzer's: the first character chooses the operation,
// the second the options, the rest is the script of the playback (harness/Script.h).
#include "harness/Client.h"
#include "harness/ClientCalls.h"
#include "harness/LeftLists.h"
#include "harness/Require.h"
#include "harness/ScriptMutator.h"

#include <curl/curl.h>

#include <cstdint>
#include <string>

const std::size_t kChoices = 2;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < kChoices) {
        return 0;
    }
    const LeftLists lists;
    const unsigned operation = (data[0] + 246U - '0') % kClientOperations;
    const unsigned options = data[1];
    runAgainst(std::string(reinterpret_cast<const char*>(data + kChoices), size - kChoices), [&](SFtpRequest request,
                                                                                                 Network&) {
        if ((options & 2) != 0) {
            request.caCert = serverCertificate();
        }
        if ((options & 4) != 0) {
            request.remotePath.replace(0, 3, "ftps");
        }
        const bool takesText = (options & 1) != 0 && operation != 0;
        const int code = takesText ? operateWithText(operation, request) : operate(operation, request, options / 8 % 2);
        require(code >= -1 && code < CURL_LAST, "the result is one of libcurl's or -1");
    });
    return 0;
}
