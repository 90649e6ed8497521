#ifndef SESSION_CONTRACT_OPERATIONCALLS_H
#define SESSION_CONTRACT_OPERATIONCALLS_H

#include <SFtpRequest.h>
#include <SFtpSession.h>

#include <ostream>
#include <string>
#include <vector>

/// An operation of a session, as a row of a table of tests.
struct OperationCall
{
    std::string function; ///< its name
    int (*run)(SFtpSession& session, const SFtpRequest& request, std::string& errorText);
};

std::ostream& operator<<(std::ostream& stream, const OperationCall& call);

/// Every operation once. Those with a sink or a source drop what they get and send "the bytes of a source"; the
/// time that is set is 2026-01-02 03:04:05.999.
const std::vector<OperationCall>& operationCalls();
const OperationCall& operationCall(const std::string& function);

/// What they got: the entries, the names of entries, the bytes, the time or the checksum of the last call that gave
/// any.
std::string& lastGot();

#endif
