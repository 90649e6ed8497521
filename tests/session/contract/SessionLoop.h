#ifndef SESSION_CONTRACT_SESSIONLOOP_H
#define SESSION_CONTRACT_SESSIONLOOP_H

#include "OperationCalls.h"
#include "SessionContract.h"

#include <algorithm>
#include <cstddef>
#include <string>

/// The base of the tests of how a session drives libcurl, with connection tests.
class SessionLoop : public SessionContract
{
protected:
    SessionLoop() { request.remotePath = "ftp://server/backup/"; }

    int test(SFtpSession& session) { return session.TestSConnect(request, errorText); }

    static std::ptrdiff_t countOf(const Lines& lines, const std::string& piece)
    {
        return std::count_if(lines.begin(), lines.end(),
                             [&piece](const std::string& line) { return line.find(piece) != std::string::npos; });
    }
};

#endif
