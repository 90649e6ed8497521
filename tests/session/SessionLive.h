#ifndef SESSION_SESSIONLIVE_H
#define SESSION_SESSIONLIVE_H

#include "support/Live.h"
#include "support/LiveHost.h"

#include <SFtpSession.h>

#include <curl/curl.h>

#include <string>

/// The base of the tests of a session against the test server, which demands TLS at login and the control connection's
/// TLS session on data connections.
class SessionLive : public Live
{
protected:
    SessionLive()
    {
        config.tlsRequiredAtLogin = true;
        config.tlsReuseRequired = true;
    }

    /// Aims the request at this path of the server.
    void aimAt(const std::string& path) { request.remotePath = url(path); }

    // Pieces of transcripts.
    static Lines loginOverTls()
    {
        return greeting() + Lines{"> AUTH TLS",
                                  "< 234 TLS next",
                                  "= TLS on control",
                                  "> USER backup",
                                  "< 331 password please",
                                  "> PASS ****",
                                  "< 230 logged in",
                                  "> PBSZ 0",
                                  "< 200 PBSZ=0",
                                  "> PROT P",
                                  "< 200 protection set",
                                  "> PWD",
                                  "< 257 \"/\""};
    }
    static Lines passive() { return {"> EPSV", "< 229 Entering Extended Passive Mode (|||PORT|)"}; }
    static Lines data(const std::string& command, std::size_t bytes, const char* moved)
    {
        return {"> " + command, moved[0] == 's' ? "< 150 data follows" : "< 150 send the data", "= TLS on data",
                "= " + std::to_string(bytes) + " bytes " + moved, "< 226 done"};
    }

    RemoteEntry entry;
    std::vector<RemoteEntry> entries;
};

#endif
