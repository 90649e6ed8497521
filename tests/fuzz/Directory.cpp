// The directory of a rename or a delete, found in a URL.
#include "harness/Require.h"

#include "transfer/RemoteDirPath.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string url(reinterpret_cast<const char*>(data), size);
    const std::string untouched = "untouched";
    std::string path = untouched;
    if (!findRemoteDirPath(url, path)) {
        require(path == untouched, "where there is no directory, none is given");
        const std::string::size_type colon = url.rfind(':');
        require(colon == std::string::npos || url.find('/', colon) == std::string::npos,
                "a \"/\" behind the last \":\" begins a directory");
        return 0;
    }
    require(!path.empty() && path.front() == '/', "a directory begins with \"/\"");
    require(path.find(':') == std::string::npos, "the directory stands behind the last \":\"");
    const std::string::size_type start = url.size() - path.size();
    require(path.size() <= url.size() && url.compare(start, path.size(), path) == 0, "the directory ends the URL");
    require(url.rfind('/', start - 1) == std::string::npos || url.rfind('/', start - 1) < url.rfind(':'),
            "the directory begins with the first \"/\" behind the last \":\"");
    return 0;
}
