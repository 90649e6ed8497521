#include "operation/SessionRun.h"

#include "operation/Interruption.h"
#include "operation/SessionOptionsOf.h"
#include "operation/Streams.h"
#include "output/Hint.h"
#include "output/MaskedLog.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace {

constexpr char kReply[] = " (the server's last reply: ";
constexpr char kLeft[] = "; the new file may be under ";
constexpr int kNoMoreConnections = 421; // libcurl reports it as a time-out
constexpr char kStream[] = "-";

/// What a session says about a failure, taken apart.
struct SessionText
{
    SessionText(const std::string& text, CURLcode code) : meaning(curl_easy_strerror(code)), reply(codeQuotedIn(text))
    {
        const char* const refusedDirectory = curl_easy_strerror(CURLE_REMOTE_ACCESS_DENIED);
        if (code == CURLE_REMOTE_FILE_NOT_FOUND && boost::starts_with(text, refusedDirectory)) {
            meaning = refusedDirectory; // which is reported as a missing file
        }
        const std::string::size_type end = std::min(text.find(kReply), text.size());
        const std::string::size_type begin = meaning.size() + 2;
        detail = begin < end ? text.substr(begin, end - begin) : std::string();
        whatIsLeft = text.substr(std::min(text.rfind(kLeft), text.size()));
    }

    std::string meaning;    // libcurl's words for the code
    std::string detail;     // empty where there is nothing to add
    std::string whatIsLeft; // of an upload that broke off between its renames
    int reply;              // the code of the server's last one
};

// Otherwise it repeats what the code means, or what the server has replied, which says more.
bool saysMore(CURLcode code, int reply)
{
    constexpr int kRefusal = 400;
    return reply < kRefusal && code != CURLE_COULDNT_CONNECT && code != CURLE_GOT_NOTHING && code != CURLE_SEND_ERROR &&
           code != CURLE_RECV_ERROR;
}

} // namespace

SessionRun::SessionRun(const Arguments& arguments, const SFtpRequest& request, const SessionOptions& options,
                       SessionWatch& watch, Progress* progress, Notice notice)
    : m_arguments(arguments), m_request(request), m_options(options), m_watch(watch), m_progress(progress),
      m_notice(std::move(notice)), m_mask(request.userName, request.password),
      m_clock(limitsOf(arguments), std::chrono::steady_clock::now())
{
}

SessionOptions SessionRun::optionsNow()
{
    SessionOptions options = m_options;
    if (m_arguments.maxTime.count() > 0) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(m_clock.leftAt(std::chrono::steady_clock::now()));
        options.callTimeout = std::max(left, std::chrono::milliseconds(1));
    }
    if (m_progress != nullptr) {
        m_progress->start();
        options.progress = [this](const TransferProgress& now) {
            if (now.bytes > 0) {
                m_progress->show(now.bytes, std::max<std::int64_t>(now.total, 0));
            }
        };
    }
    return options;
}

void SessionRun::attempt(Result& result)
{
    m_watch.restart();
    std::string text;
    call(result, text);
    result.bytes = m_watch.bytes();
    describe(text, result);
}

void SessionRun::call(Result& result, std::string& text)
{
    const MaskedLog log(m_mask);
    try {
        SFtpSession session = sessionWith(optionsNow());
        const CancelledBySignal cancelled(session);
        result.code = perform(session, result, text);
    } catch (const StreamFailure& failure) {
        result.code = m_arguments.operation == Operation::Put ? CURLE_READ_ERROR : CURLE_WRITE_ERROR;
        text = std::string(curl_easy_strerror(static_cast<CURLcode>(result.code))) + ": " + failure.what();
    }
    if (result.code == CURLE_WRITE_ERROR && m_request.localPath == kStream && isOutputClosed()) {
        static_cast<void>(std::raise(SIGPIPE)); // which a session keeps to itself
    }
    if (m_progress != nullptr) {
        m_progress->clear();
    }
}

int SessionRun::perform(SFtpSession& session, Result& result, std::string& text)
{
    const auto sink = [this](const char* bytes, std::size_t size) {
        m_hasStreamed = true;
        return writeToOutput(bytes, size);
    };
    const auto source = [this](char* bytes, std::size_t size) {
        m_hasStreamed = true;
        const std::size_t count = readFromInput(bytes, size);
        m_hasInputEnded = count == 0;
        return count;
    };
    switch (m_arguments.operation) {
    case Operation::Test:
        return session.TestSConnect(m_request, text);
    case Operation::List:
        if (m_arguments.isLong) {
            return session.ListEntries(m_request, result.entries.emplace(), text);
        }
        return session.Listsftpdir(m_request, text);
    case Operation::Get:
        return m_request.localPath == kStream ? session.DownLoadTo(m_request, sink, text)
                                              : session.DownLoadSFtpFile(m_request, text);
    case Operation::Put:
        return m_request.localPath == kStream ? session.UploadFrom(m_request, source, text)
                                              : session.UploadFileToSFtpServer(m_request, text);
    case Operation::Move:
        return session.ReNameSFtpFile(m_request, text);
    case Operation::Remove:
        return session.DelSFtpFile(m_request, text);
    case Operation::MakeDirectory:
        return session.MakeSFtpDir(m_request, text);
    case Operation::RemoveDirectory:
        return session.RemoveSFtpDir(m_request, text);
    case Operation::Stat:
        return session.StatEntry(m_request, result.entry.emplace(), text);
    default: // trees and doctor are not run here
        return kNotRun;
    }
}

void SessionRun::describe(const std::string& sessionText, Result& result)
{
    const auto code = static_cast<CURLcode>(result.code);
    result.reply.clear();
    result.hint.clear();
    result.sizeChecked.reset();
    m_mayPass = false;
    noteSizeCheck(result);
    if (code == CURLE_OK) {
        result.text = curl_easy_strerror(code);
        return;
    }
    result.entries.reset();
    result.entry.reset();
    const SessionText text(sessionText, code);
    const Reply reply = text.reply != 0 ? m_watch.lastWith(text.reply) : Reply();
    result.text = textOf(code, text.meaning, text.detail, reply);
    const std::string left = m_mask.hiddenIn(text.whatIsLeft);
    result.text += left;
    if (!left.empty()) {
        m_whatIsLeft = left.substr(2);
    }
    if (reply.code != 0) {
        // The code is no text of the server's: masked, it would say something else where a password is a number.
        result.reply = std::to_string(reply.code) + " " + m_mask.hiddenIn(reply.text);
    }
    result.hint = hintFor(m_arguments.remote.isSsh() ? Way::SshSession : Way::Session, code, reply);
    // What has gone through a pipe cannot be had a second time.
    m_mayPass = isTransient(code, reply.code, text.detail) && !m_hasStreamed;
}

std::string SessionRun::textOf(CURLcode code, const std::string& meaning, const std::string& detail,
                               const Reply& reply) const
{
    if (code == CURLE_OPERATION_TIMEDOUT) {
        return reply.code == kNoMoreConnections ? "The server ended the connection"
                                                : meaning + ": " + timeoutText(detail, reply);
    }
    const bool isShown = !detail.empty() && (saysMore(code, reply.code) || !m_options.proxy.empty());
    return meaning + (isShown ? ": " + m_mask.hiddenIn(withOptionNames(detail)) : "");
}

std::string SessionRun::timeoutText(const std::string& detail, const Reply& reply) const
{
    if (boost::starts_with(detail, "no reply for") || boost::starts_with(detail, "no byte moved for")) {
        return m_clock.limits().stallText();
    }
    if (isOver({})) {
        return m_clock.limits().wholeText();
    }
    return m_clock.limits().connectText(reply.command == "EPSV" || reply.command == "PASV");
}

void SessionRun::noteSizeCheck(Result& result) const
{
    if (m_arguments.operation != Operation::Put || !m_arguments.verifies) {
        return;
    }
    result.sizeChecked = m_arguments.remote.isSsh() || m_watch.hasReplied("SIZE", 213);
    if (result.code == 0 && !*result.sizeChecked) {
        m_notice(result.operation + ": the size on the server was not checked: the server does not report it");
    }
}

// Whether the server may hold something of an upload.
bool SessionRun::hasBegun(const Result& result) const
{
    constexpr int kOpening = 150;
    constexpr int kOpen = 125;
    return result.bytes > 0 || m_watch.hasReplied("STOR", kOpening) || m_watch.hasReplied("STOR", kOpen);
}

// Whether the server may have been told to give an upload its name.
bool SessionRun::mayBeInPlace(const Result& result) const
{
    if (!m_arguments.remote.isSsh()) {
        return m_watch.hasSent("RNTO");
    }
    if (m_request.localPath == kStream) {
        return m_hasInputEnded;
    }
    // No command is to be seen there, nor where a resumed upload has begun.
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(m_request.localPath, error);
    return m_options.resume || static_cast<std::uintmax_t>(result.bytes) >= size;
}

std::string SessionRun::whatIsLeftOfUpload(const Result& result) const
{
    if (!m_whatIsLeft.empty()) {
        return m_whatIsLeft;
    }
    if (mayBeInPlace(result)) {
        return "whether the server has the new file is not known: it, or the old one, may be under another name beside "
               "it";
    }
    return hasBegun(result) ? "the server has the file as it was, and may hold a part of the new one beside it"
                            : "nothing was sent";
}

std::string SessionRun::whatIsLeft(const Result& result) const
{
    switch (m_arguments.operation) {
    case Operation::Get:
        return m_request.localPath == kStream ? std::to_string(result.bytes) + " bytes were written"
                                              : m_request.localPath + " is as it was";
    case Operation::Put:
        return whatIsLeftOfUpload(result);
    case Operation::List:
        return m_arguments.local.empty() ? "nothing is left of it" : m_request.localPath + " is as it was";
    case Operation::Move:
    case Operation::Remove:
    case Operation::MakeDirectory:
    case Operation::RemoveDirectory:
        return "whether the server has carried it out is not known";
    default:
        return "nothing was tested to its end";
    }
}
