#ifndef SFTPCLIENT_CLI_OPERATION_OPERATIONRUN_H
#define SFTPCLIENT_CLI_OPERATION_OPERATIONRUN_H

#include "base/Arguments.h"
#include "operation/OperationWatch.h"
#include "output/JsonResult.h"
#include "output/PasswordMask.h"

#include <SFtpRequest.h>

#include <string>

/// One operation from its first attempt to its end: tried again after passing faults as often as was asked for. The
/// check of the size on the server belongs to each attempt of an upload. What comes from the server is masked in the
/// result.
class OperationRun
{
public:
    /// All three are used as long as the object lives; `watch` must see the transfers.
    OperationRun(const Arguments& arguments, const SFtpRequest& request, OperationWatch& watch)
        : m_arguments(arguments), m_request(request), m_watch(watch), m_mask(request.userName, request.password)
    {
    }

    /// REQUIRES: an `Interruption`.
    Result run();

private:
    void attempt();
    CURLcode fault() const;
    bool mayPass() const;
    void checkUpload();
    void describe(const std::string& libraryText);
    void describeReply();
    std::string lastReply() const;
    std::string textOf(CURLcode code) const;
    void describeInterruption(int signal);
    std::string whatIsLeft() const;

    const Arguments& m_arguments;
    const SFtpRequest& m_request;
    OperationWatch& m_watch;
    const PasswordMask m_mask;
    Result m_result;
    bool m_isDamaged = false; // what the last attempt sent
};

#endif
