#ifndef SFTPCLIENT_CLI_OPERATION_OPERATIONRUN_H
#define SFTPCLIENT_CLI_OPERATION_OPERATIONRUN_H

#include "base/Result.h"
#include "operation/Retry.h"

#include <chrono>
#include <functional>
#include <string>

/// Gets each line that the user is to read while an operation runs.
using Notice = std::function<void(const std::string& line)>;

/// One way to carry out an operation: as a host with SFtpClient does, or on a session.
class OperationRun
{
public:
    virtual ~OperationRun() = default;

    /// Carries it out once, and says in `result` how that went. What comes from the server is masked there.
    virtual void attempt(Result& result) = 0;

    /// Whether the last attempt failed in a way that may pass by itself.
    virtual bool mayPass() const = 0;

    /// Whether nothing may follow any more that takes this long.
    virtual bool isOver(std::chrono::milliseconds more) const = 0;

    /// What an interruption of the last attempt has left.
    virtual std::string whatIsLeft(const Result& result) const = 0;
};

/// From the first attempt to the end: tried again after passing faults as often as `retry` says, each time told by
/// `notice`. REQUIRES: an `Interruption`.
Result runToItsEnd(OperationRun& run, Result result, Retry retry, const Notice& notice);

#endif
