#include "doctor/probes/Probes.h"

#include <curl/curl.h>

#include <memory>

namespace doctor {

namespace {

std::string orNone(const char* text) { return text == nullptr ? "none" : text; }

// Without CURLU_NON_SUPPORT_SCHEME, libcurl takes the schemes alone for which it was built.
bool speaks(const std::string& url)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parts(curl_url(), curl_url_cleanup);
    return curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), CURLU_PATH_AS_IS) != CURLUE_UNSUPPORTED_SCHEME;
}

} // namespace

void probeLibcurl(Report& report)
{
    const curl_version_info_data& libcurl = *curl_version_info(CURLVERSION_NOW);
    report.libcurl.number = libcurl.version_num;
    report.libcurl.version = libcurl.version;
    report.libcurl.backEnds = orNone(libcurl.ssl_version) + ", " + orNone(libcurl.libssh_version);
    report.libcurl.speaksScheme = speaks(report.url);
}

} // namespace doctor
