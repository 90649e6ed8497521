#ifndef SFTPCLIENT_CLI_OUTPUT_TRACE_H
#define SFTPCLIENT_CLI_OUTPUT_TRACE_H

#include "output/LoginMask.h"

#include <curl/curl.h>

#include <iosfwd>
#include <string_view>

/// Writes what libcurl says ("> "), hears ("< ") and notes ("* ") to a stream, a line each, with the login masked and
/// control bytes escaped.
class Trace
{
public:
    Trace(std::ostream& out, const std::string& user, const std::string& password) : m_out(out), m_mask(user, password)
    {
    }

    /// `text`: one line or more, each with its end.
    void write(curl_infotype type, std::string_view text);

private:
    std::ostream& m_out;
    LoginMask m_mask;
};

#endif
