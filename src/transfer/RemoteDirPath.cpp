#include "transfer/RemoteDirPath.h"

// No URL parser: the last ":" is taken for the one before the port.
bool findRemoteDirPath(const std::string& url, std::string& remoteDirPath)
{
    const std::string::size_type colon = url.rfind(':');
    if (colon == std::string::npos) {
        return false;
    }
    const std::string::size_type slash = url.find('/', colon + 1);
    if (slash == std::string::npos) {
        return false;
    }
    remoteDirPath = url.substr(slash);
    return true;
}
