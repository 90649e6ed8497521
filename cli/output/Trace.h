#ifndef SFTPCLIENT_CLI_OUTPUT_TRACE_H
#define SFTPCLIENT_CLI_OUTPUT_TRACE_H

#include "output/LoginMask.h"
#include "output/Progress.h"

#include <curl/curl.h>

#include <iosfwd>
#include <string_view>

/// Writes what libcurl says ("> "), hears ("< ") and notes ("* ") to a stream, a line each, with the login masked and
/// control bytes escaped.
class Trace
{
public:
    /// `progress`: what is shown on the same terminal, or null. Both stay the caller's.
    Trace(std::ostream& out, const std::string& user, const std::string& password, Progress* progress = nullptr)
        : m_out(out), m_mask(user, password), m_progress(progress)
    {
    }

    /// `text`: one line or more, each with its end; files' and TLS's own bytes are left out.
    void write(curl_infotype type, std::string_view text);

private:
    std::ostream& m_out;
    LoginMask m_mask;
    Progress* m_progress;
};

#endif
