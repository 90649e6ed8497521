#include "operation/OperationRun.h"

#include "operation/Interruption.h"
#include "operation/Operations.h"
#include "operation/Retry.h"
#include "operation/UploadCheck.h"
#include "output/Hint.h"
#include "output/ResultLine.h"

#include <EscapeControlBytes.h>

#include <chrono>
#include <iostream>

namespace {

// The size check is the first transfer of a download; by the second one the local file has been emptied.
constexpr unsigned kTransfersOfDownload = 2;

std::string inSeconds(std::chrono::milliseconds delay)
{
    std::string text = std::to_string(std::chrono::duration<double>(delay).count());
    text.erase(text.find_last_not_of('0') + 1);
    return text.substr(0, text.back() == '.' ? text.size() - 1 : text.size()) + " s";
}

} // namespace

Result OperationRun::run()
{
    const auto begin = std::chrono::steady_clock::now();
    m_result.operation = m_arguments.name;
    m_result.url = m_request.remotePath;
    Retry retry(m_arguments.retries, m_arguments.retryDelay);
    attempt();
    while (retry.isLeft() && mayPass()) {
        const std::chrono::milliseconds delay = retry.next();
        if (m_watch.isOver(delay)) {
            break;
        }
        std::cerr << lineOf(m_result) << "; trying again in " << inSeconds(delay) << std::endl;
        Interruption::wait(delay);
        if (Interruption::signal() == 0) {
            ++m_result.attempts;
            attempt();
        }
    }
    if (Interruption::signal() != 0 && m_result.code != 0) {
        describeInterruption(Interruption::signal());
    }
    m_result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return m_result;
}

void OperationRun::attempt()
{
    m_watch.restart();
    m_isDamaged = false;
    m_result.sizeChecked.reset();
    std::string libraryText;
    m_result.code = perform(m_arguments.operation, m_request, libraryText);
    m_result.bytes = m_watch.lastBytes();
    describe(libraryText);
    if (m_arguments.operation == Operation::Put && m_result.code == 0 && m_arguments.verifies) {
        checkUpload();
    }
}

// libcurl's result, also where the library hides it behind a -1.
CURLcode OperationRun::fault() const
{
    return m_result.code == kNotRun ? m_watch.lastResult() : static_cast<CURLcode>(m_result.code);
}

bool OperationRun::mayPass() const { return (m_isDamaged || isPassingFault(fault())) && Interruption::signal() == 0; }

std::string OperationRun::textOf(CURLcode code) const
{
    const std::string& limit = m_watch.limitReached();
    return curl_easy_strerror(code) + (limit.empty() ? "" : ": " + limit);
}

void OperationRun::describe(const std::string& libraryText)
{
    const CURLcode last = m_watch.lastResult();
    if (m_result.code != kNotRun) {
        // The library has no text for success, nor for any result of a connection test.
        const bool hasText = !libraryText.empty() && m_watch.limitReached().empty();
        m_result.text = hasText ? libraryText : textOf(static_cast<CURLcode>(m_result.code));
    } else if (last != CURLE_OK) {
        m_result.text = "the size check before the download failed: " + std::to_string(last) + " " + textOf(last);
    } else if (m_watch.transfers() > 0) {
        m_result.text = "the size check before the download refused: the server does not report the file's size, or it "
                        "is above the library's limit; the log records above say which";
    } else {
        m_result.text = "the library could not run it; see the log records above";
    }
    describeReply();
}

void OperationRun::describeReply()
{
    m_result.reply = lastReply();
    m_result.hint = hintFor(fault(), m_watch.lastReply());
}

// Of a transfer that failed.
std::string OperationRun::lastReply() const
{
    const Reply& reply = m_watch.lastReply();
    if (m_watch.lastResult() == CURLE_OK || reply.code == 0) {
        return {};
    }
    // The code is no text of the server's: masked, it would say something else where a password is a number.
    return std::to_string(reply.code) + " " + m_mask.hiddenIn(reply.text);
}

void OperationRun::checkUpload()
{
    const std::int64_t sent = m_result.bytes;
    const bool comparable = canCompareSize(m_request.remotePath);
    const RemoteSize size = comparable ? askSize(m_request) : RemoteSize();
    if (Interruption::signal() != 0) {
        m_result.code = CURLE_ABORTED_BY_CALLBACK;
        return;
    }
    m_result.sizeChecked = size.bytes.has_value();
    m_isDamaged = size.bytes && *size.bytes != sent;
    if (m_isDamaged) {
        m_result.code = CURLE_PARTIAL_FILE;
        m_result.text = "the server has " + std::to_string(*size.bytes) + " bytes of the " + std::to_string(sent) +
                        " that were sent: the file there is damaged. Send it again; where that happens often, limit "
                        "the server to TLS 1.2 or install libcurl 8.9 or newer";
    } else if (comparable && isPassingFault(m_watch.lastResult())) {
        m_result.code = m_watch.lastResult();
        m_result.text = "all was sent, but the check of its size on the server failed: " + textOf(m_watch.lastResult());
        describeReply();
    } else if (comparable && !size.bytes) {
        std::cerr << m_result.operation << ": the size on the server was not checked: "
                  << escapeControlBytes(withReply(size.whyNot, lastReply())) << "\n";
    }
}

void OperationRun::describeInterruption(int signal)
{
    m_result.signal = nameOfSignal(signal);
    m_result.hint.clear();
    m_result.reply.clear();
    m_result.code = CURLE_ABORTED_BY_CALLBACK;
    m_result.text = "interrupted by " + m_result.signal + "; " + whatIsLeft();
}

std::string OperationRun::whatIsLeft() const
{
    const std::string bytes = std::to_string(m_result.bytes) + " bytes";
    switch (m_arguments.operation) {
    case Operation::Get:
        return m_watch.transfers() < kTransfersOfDownload ? "nothing was fetched"
                                                          : m_request.localPath + " holds the first " + bytes;
    case Operation::Put:
        return m_result.bytes == 0 ? "nothing was sent" : "the server may hold up to " + bytes + " of the file";
    case Operation::List:
        return m_arguments.local.empty() ? "nothing is left of it" : m_request.localPath + " holds " + bytes;
    case Operation::Move:
    case Operation::Remove:
        return "whether the server has carried it out is not known";
    default:
        return "nothing was tested to its end";
    }
}
