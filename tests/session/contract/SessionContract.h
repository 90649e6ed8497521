#ifndef SESSION_CONTRACT_SESSIONCONTRACT_H
#define SESSION_CONTRACT_SESSIONCONTRACT_H

#include "contract/Contract.h"

#include <SFtpSession.h>

#include <string>
#include <vector>

/// The base of the tests of the shipped session against the scripted libcurl, behind which stands a server that does
/// what it is told.
class SessionContract : public Contract
{
protected:
    SessionContract();

    /// Runs a piece with a session of its own and gives the journal, the session's beginning and end included. The
    /// digits in a temporary name, which come by chance, are X.
    using Piece = std::function<void(SFtpSession&)>;
    Lines journalOfSession(const Piece& piece);

    /// The same for one call that must come to this code.
    using Call = std::function<int(SFtpSession&, const SFtpRequest&, std::string&)>;
    Lines journalOfCall(const Call& call, int expected = CURLE_OK);

    /// What the server makes of a transfer: the default behaviour of the scripted libcurl here.
    CURLcode serve(const scripted::Handle& handle);

    SessionOptions options;
    std::string errorText = "as it was";
    std::string content = "the content";     ///< what is downloaded or listed
    std::string uploaded;                    ///< what came up last
    std::vector<std::string> features;       ///< lines of the reply to FEAT
    std::string toldChecksum;                ///< in the reply to HASH, XSHA256 and XCRC
    bool targetIsFile = false;               ///< so that "a.bak/" cannot be entered
    std::string toldSize;                    ///< in the reply to SIZE; empty: what has been uploaded
    std::map<std::string, CURLcode> refused; ///< commands that end a transfer, with what libcurl makes of it

    std::string refusal = "550 not that"; ///< what the server says of them

private:
    bool isKnown(const scripted::Handle& handle) const;
    CURLcode command(const scripted::Handle& handle, const std::string& text);
    CURLcode moveFile(const scripted::Handle& handle);
};

// Pieces of journals.

/// A connection that is made, and one that goes.
Lines connectionMade();
Lines connectionClosed();

/// What a handle is told before each transfer, whatever the operation, for a URL of this scheme.
Lines setUp(const std::string& scheme);

/// A transfer: set up, told these things beyond, and run to this result.
Lines transferOf(const Lines& setUp, const Lines& told, int code = CURLE_OK);

/// The session's record of an end, and of a failure.
std::string endOf(const std::string& function, const SFtpRequest& request);
std::string failureOf(const std::string& function, const SFtpRequest& request, int code, const std::string& text);

/// And of an exception that is the host's own.
std::string exceptionOf(const std::string& function, const SFtpRequest& request);

/// The same lines with another value of an option that is among them.
Lines withOption(Lines lines, const std::string& option, const std::string& value);

/// The same lines with these behind the one of that option.
Lines withBehind(Lines lines, const std::string& option, const Lines& more);

#endif
