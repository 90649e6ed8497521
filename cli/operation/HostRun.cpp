#include "operation/HostRun.h"

#include "operation/Interruption.h"
#include "operation/UploadCheck.h"
#include "output/Hint.h"
#include "output/ResultLine.h"
#include "output/StandardStreams.h"

#include <EscapeControlBytes.h>
#include <ISFtpClient.h>
#include <SFtpClient.h>

#include <unistd.h>

namespace {

// The size check is the first transfer of a download; by the second one the local file has been emptied.
constexpr unsigned kTransfersOfDownload = 2;

constexpr uint32_t kTimeout = 90;

// Gives the library's result. What libcurl prints to standard output meanwhile goes nowhere: header lines of the size
// check, and the contents of what a connection test or a rename visits.
int perform(Operation operation, const SFtpRequest& request, std::string& errorText)
{
    const Silenced output(STDOUT_FILENO);
    SFtpClient client;
    switch (operation) {
    case Operation::Test:
        return ISFtpClient::CreateClient()->TestSConnect(request, kTimeout);
    case Operation::List:
        return client.Listsftpdir(request, errorText);
    case Operation::Get:
        return client.DownLoadSFtpFile(request, errorText);
    case Operation::Put:
        return client.UploadFileToSFtpServer(request, errorText);
    case Operation::Move:
        return client.ReNameSFtpFile(request, errorText);
    case Operation::Remove:
        return client.DelSFtpFile(request, errorText);
    default: // SFtpClient has no others
        return kNotRun;
    }
}

} // namespace

void HostRun::attempt(Result& result)
{
    m_watch.restart();
    m_isDamaged = false;
    result.sizeChecked.reset();
    std::string libraryText;
    result.code = perform(m_arguments.operation, m_request, libraryText);
    result.bytes = m_watch.lastBytes();
    m_fault = result.code == kNotRun ? m_watch.lastResult() : static_cast<CURLcode>(result.code);
    describe(libraryText, result);
    if (m_arguments.operation == Operation::Put && result.code == 0 && m_arguments.verifies) {
        checkUpload(result);
    }
}

bool HostRun::mayPass() const { return m_isDamaged || isPassingFault(m_fault); }

std::string HostRun::textOf(CURLcode code) const
{
    const std::string& limit = m_watch.limitReached();
    return curl_easy_strerror(code) + (limit.empty() ? "" : ": " + limit);
}

void HostRun::describe(const std::string& libraryText, Result& result) const
{
    const CURLcode last = m_watch.lastResult();
    if (result.code != kNotRun) {
        // The library has no text for success, nor for any result of a connection test.
        const bool hasText = !libraryText.empty() && m_watch.limitReached().empty();
        result.text = hasText ? libraryText : textOf(static_cast<CURLcode>(result.code));
    } else if (last != CURLE_OK) {
        result.text = "the size check before the download failed: " + std::to_string(last) + " " + textOf(last);
    } else if (m_watch.transfers() > 0) {
        result.text = "the size check before the download refused: the server does not report the file's size, or it "
                      "is above the library's limit; the log records above say which";
    } else {
        result.text = "the library could not run it; see the log records above";
    }
    describeReply(result);
}

void HostRun::describeReply(Result& result) const
{
    result.reply = lastReply();
    result.hint = hintFor(Way::AsHost, m_fault, m_watch.lastReply());
}

// Of a transfer that failed.
std::string HostRun::lastReply() const
{
    const Reply& reply = m_watch.lastReply();
    if (m_watch.lastResult() == CURLE_OK || reply.code == 0) {
        return {};
    }
    // The code is no text of the server's: masked, it would say something else where a password is a number.
    return std::to_string(reply.code) + " " + m_mask.hiddenIn(reply.text);
}

void HostRun::checkUpload(Result& result)
{
    const std::int64_t sent = result.bytes;
    const bool comparable = canCompareSize(m_request.remotePath);
    const RemoteSize size = comparable ? askSize(m_request) : RemoteSize();
    if (Interruption::signal() != 0) {
        result.code = CURLE_ABORTED_BY_CALLBACK;
        return;
    }
    result.sizeChecked = size.bytes.has_value();
    m_isDamaged = size.bytes && *size.bytes != sent;
    if (m_isDamaged) {
        result.code = CURLE_PARTIAL_FILE;
        result.text = "the server has " + std::to_string(*size.bytes) + " bytes of the " + std::to_string(sent) +
                      " that were sent: the file there is damaged. Send it again; where that happens often, limit "
                      "the server to TLS 1.2 or install libcurl 8.14.1 or newer";
    } else if (comparable && isPassingFault(m_watch.lastResult())) {
        result.code = m_watch.lastResult();
        result.text = "all was sent, but the check of its size on the server failed: " + textOf(m_watch.lastResult());
        m_fault = m_watch.lastResult();
        describeReply(result);
    } else if (comparable && !size.bytes) {
        m_notice(result.operation + ": the size on the server was not checked: " +
                 escapeControlBytes(withReply(size.whyNot, lastReply())));
    }
}

std::string HostRun::whatIsLeft(const Result& result) const
{
    const std::string bytes = std::to_string(result.bytes) + " bytes";
    switch (m_arguments.operation) {
    case Operation::Get:
        return m_watch.transfers() < kTransfersOfDownload ? "nothing was fetched"
                                                          : m_request.localPath + " holds the first " + bytes;
    case Operation::Put:
        return result.bytes == 0 ? "nothing was sent" : "the server may hold up to " + bytes + " of the file";
    case Operation::List:
        return m_arguments.local.empty() ? "nothing is left of it" : m_request.localPath + " holds " + bytes;
    case Operation::Move:
    case Operation::Remove:
        return "whether the server has carried it out is not known";
    default:
        return "nothing was tested to its end";
    }
}
