#include "doctor/probes/Probes.h"

#include <curl/curl.h>

#include <cstdlib>
#include <cstring>

namespace doctor {

namespace {

std::string orNone(const char* text) { return text == nullptr ? "none" : text; }

bool speaks(const curl_version_info_data& libcurl, const char* scheme)
{
    for (const char* const* protocol = libcurl.protocols; *protocol != nullptr; ++protocol) {
        if (std::strcmp(*protocol, scheme) == 0) {
            return true;
        }
    }
    return false;
}

const char* nameOf(Scheme scheme)
{
    if (scheme == Scheme::Ftps) {
        return "ftps";
    }
    return scheme == Scheme::Sftp ? "sftp" : "ftp";
}

// The variables in libcurl's order.
std::string proxyFor(const std::string& scheme)
{
    for (const std::string& name : {scheme + "_proxy", std::string("all_proxy"), std::string("ALL_PROXY")}) {
        const char* const value = std::getenv(name.c_str());
        if (value != nullptr && *value != '\0') {
            return name;
        }
    }
    return {};
}

} // namespace

void probeLibcurl(Report& report)
{
    const curl_version_info_data& libcurl = *curl_version_info(CURLVERSION_NOW);
    report.libcurl.number = libcurl.version_num;
    report.libcurl.version = libcurl.version;
    report.libcurl.backEnds = orNone(libcurl.ssl_version) + ", " + orNone(libcurl.libssh_version);
    report.libcurl.speaksScheme = speaks(libcurl, nameOf(report.scheme));
    report.proxy = proxyFor(nameOf(report.scheme));
}

} // namespace doctor
