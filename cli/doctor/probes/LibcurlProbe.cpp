#include "doctor/probes/Probes.h"

#include <curl/curl.h>

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

} // namespace

void probeLibcurl(Report& report)
{
    const curl_version_info_data& libcurl = *curl_version_info(CURLVERSION_NOW);
    report.libcurl.number = libcurl.version_num;
    report.libcurl.version = libcurl.version;
    report.libcurl.backEnds = orNone(libcurl.ssl_version) + ", " + orNone(libcurl.libssh_version);
    report.libcurl.speaksScheme = speaks(libcurl, nameOf(report.scheme));
}

} // namespace doctor
