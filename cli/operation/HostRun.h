#ifndef SFTPCLIENT_CLI_OPERATION_HOSTRUN_H
#define SFTPCLIENT_CLI_OPERATION_HOSTRUN_H

#include "base/Arguments.h"
#include "operation/HostWatch.h"
#include "operation/OperationRun.h"
#include "output/PasswordMask.h"

#include <SFtpRequest.h>

#include <string>

/// An operation as a host with SFtpClient runs it. REQUIRES: one thread alone. The check of the size on the server
/// belongs to each attempt of an upload.
class HostRun : public OperationRun
{
public:
    /// All are used as long as the object lives; `watch` must see the transfers.
    HostRun(const Arguments& arguments, const SFtpRequest& request, HostWatch& watch, Notice notice)
        : m_arguments(arguments), m_request(request), m_watch(watch), m_notice(std::move(notice)),
          m_mask(request.userName, request.password)
    {
    }

    void attempt(Result& result) override;
    bool mayPass() const override;
    bool isOver(std::chrono::milliseconds more) const override { return m_watch.isOver(more); }
    std::string whatIsLeft(const Result& result) const override;

private:
    void checkUpload(Result& result);
    void describe(const std::string& libraryText, Result& result) const;
    void describeReply(Result& result) const;
    std::string lastReply() const;
    std::string textOf(CURLcode code) const;

    const Arguments& m_arguments;
    const SFtpRequest& m_request;
    HostWatch& m_watch;
    const Notice m_notice;
    const PasswordMask m_mask;
    CURLcode m_fault = CURLE_OK; // libcurl's result, also where the library hides it behind a -1
    bool m_isDamaged = false;    // what the last attempt sent
};

#endif
