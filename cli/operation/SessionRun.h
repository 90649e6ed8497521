#ifndef SFTPCLIENT_CLI_OPERATION_SESSIONRUN_H
#define SFTPCLIENT_CLI_OPERATION_SESSIONRUN_H

#include "base/Arguments.h"
#include "operation/OperationRun.h"
#include "operation/SessionWatch.h"
#include "operation/TransferClock.h"
#include "output/PasswordMask.h"

#include <SFtpRequest.h>
#include <SFtpSession.h>

#include <chrono>
#include <string>

/// An operation on sessions, one for each attempt.
class SessionRun : public OperationRun
{
public:
    /// All are used as long as the object lives; `watch` must see the transfers.
    SessionRun(const Arguments& arguments, const SFtpRequest& request, const SessionOptions& options,
               SessionWatch& watch, Progress* progress, Notice notice);

    void attempt(Result& result) override;
    bool mayPass() const override { return m_mayPass; }
    bool isOver(std::chrono::milliseconds more) const override
    {
        return m_clock.isOver(std::chrono::steady_clock::now(), more);
    }
    std::string whatIsLeft(const Result& result) const override;

private:
    void call(Result& result, std::string& text);
    SessionOptions optionsNow();
    int perform(SFtpSession& session, Result& result, std::string& text);
    void describe(const std::string& sessionText, Result& result);
    std::string textOf(CURLcode code, const std::string& meaning, const std::string& detail, const Reply& reply) const;
    std::string timeoutText(const std::string& detail, const Reply& reply) const;
    void noteSizeCheck(Result& result) const;
    bool hasBegun(const Result& result) const;
    bool mayBeInPlace(const Result& result) const;
    std::string whatIsLeftOfUpload(const Result& result) const;

    const Arguments& m_arguments;
    const SFtpRequest& m_request;
    const SessionOptions m_options;
    SessionWatch& m_watch;
    Progress* m_progress;
    const Notice m_notice;
    const PasswordMask m_mask;
    const TransferClock m_clock;
    bool m_mayPass = false; // what made the last attempt fail
    bool m_hasStreamed = false;
    bool m_hasInputEnded = false;
    std::string m_whatIsLeft; // by what a session said, masked
};

#endif
