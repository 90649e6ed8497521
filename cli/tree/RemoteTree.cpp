#include "tree/RemoteTree.h"

#include "base/PercentCode.h"
#include "base/WipedAtEnd.h"
#include "operation/Retry.h"
#include "operation/SessionOptionsOf.h"

#include <boost/algorithm/string/predicate.hpp>
#include <curl/curl.h>

#include <algorithm>

namespace {

// A name that nobody has, to ask the server whether it knows the command.
constexpr char kNobody[] = ".sftpclient-asks-for-mfmt";

std::string encoded(const std::string& path)
{
    const auto [directory, name] = splitPath(path);
    return (directory.empty() ? "" : encoded(directory) + "/") + percentEncoded(name);
}

// The local path of a call is one of an open file: its number means nothing to anybody.
std::string withoutLocalPath(std::string text, const std::string& localPath)
{
    const std::string named = "localPath " + localPath;
    const std::string::size_type at = text.find(named);
    if (!localPath.empty() && at != std::string::npos) {
        text.replace(at, named.size(), "the local file");
    }
    return text;
}

std::string parentOf(const std::string& url) { return url.substr(0, url.find_last_of('/', url.size() - 2) + 1); }

// The server does not list the command, or does not know it all the same.
bool isUnknownCommand(const TreeFailure& failure)
{
    const auto replies = {500, 502, 504};
    return failure.code() == CURLE_NOT_BUILT_IN ||
           (failure.code() == CURLE_QUOTE_ERROR &&
            std::find(replies.begin(), replies.end(), failure.reply()) != replies.end());
}

bool isTop(const std::string& url)
{
    const std::string::size_type path = url.find('/', url.find("://") + 3);
    return path == std::string::npos || path + 1 == url.size();
}

} // namespace

RemoteTree::RemoteTree(SFtpSession& session, const SFtpRequest& request, const PasswordMask& mask)
    : m_session(session), m_request(request), m_mask(mask), m_root(request.remotePath)
{
    if (m_root.back() != '/') {
        m_root += '/';
    }
    if (boost::istarts_with(m_root, "sftp:")) {
        m_times = Known::Yes;
        m_checksums = Known::No;
    }
}

bool RemoteTree::run(const Target& target, const Call& call, int excused) const
{
    SFtpRequest request = m_request;
    const WipedAtEnd wiped(request.password);
    request.remotePath = target.url;
    request.remoteFileName = target.name;
    request.localPath = target.localPath;
    std::string text;
    const int code = call(m_session, request, text);
    if (code != 0 && code != excused) {
        throw TreeFailure(code, m_mask.hiddenIn(withOptionNames(withoutLocalPath(text, target.localPath))));
    }
    return code == 0;
}

// At the top of the login's directory, servers and libcurl take "~" for that directory itself.
std::string RemoteTree::urlOf(const std::string& path) const
{
    return m_root + (isTop(m_root) && path.compare(0, 1, "~") == 0 ? "./" : "") + encoded(path);
}

std::optional<std::vector<RemoteEntry>> RemoteTree::list(const std::string& path) const
{
    std::vector<RemoteEntry> entries;
    const bool isThere = run(
        {path.empty() ? m_root : urlOf(path) + "/"},
        [&](SFtpSession& session, const SFtpRequest& request, std::string& errorText) {
            return session.ListEntries(request, entries, errorText);
        },
        CURLE_REMOTE_FILE_NOT_FOUND);
    return isThere ? std::optional(std::move(entries)) : std::nullopt;
}

void RemoteTree::makeDirectory(const std::string& path)
{
    if (path.empty()) {
        makeAll(m_root);
        return;
    }
    try {
        run({urlOf(path) + "/"}, &SFtpSession::MakeSFtpDir);
    } catch (const TreeFailure& failure) {
        // Some servers do not list names that begin with a dot.
        if (failure.code() != CURLE_QUOTE_ERROR || !list(path)) {
            throw;
        }
    }
}

void RemoteTree::makeAll(const std::string& url) const
{
    const auto make = [&] { run({url}, &SFtpSession::MakeSFtpDir); };
    try {
        make();
    } catch (const TreeFailure& failure) {
        const bool mayLackParent = failure.code() == CURLE_QUOTE_ERROR || failure.code() == CURLE_REMOTE_FILE_NOT_FOUND;
        if (!mayLackParent || isTop(url) || isTop(parentOf(url))) {
            throw;
        }
        try {
            makeAll(parentOf(url));
        } catch (const TreeFailure&) { // it may have been there
        }
        make();
    }
}

void RemoteTree::removeFile(const std::string& path)
{
    const auto [parent, name] = splitPath(path);
    const std::string url = parent.empty() ? m_root : urlOf(parent) + "/";
    run({url, name}, &SFtpSession::DelSFtpFile);
}

void RemoteTree::removeDirectory(const std::string& path) { run({urlOf(path) + "/"}, &SFtpSession::RemoveSFtpDir); }

void RemoteTree::send(const std::string& localPath, const std::string& path) const
{
    run({urlOf(path), "", localPath}, &SFtpSession::UploadFileToSFtpServer);
}

void RemoteTree::fetch(const std::string& path, const std::string& localPath) const
{
    run({urlOf(path), "", localPath}, &SFtpSession::DownLoadSFtpFile);
}

std::optional<FileTime> RemoteTree::modified(const std::string& path) const
{
    FileTime time;
    const bool isKnown = run(
        {urlOf(path)},
        [&time](SFtpSession& session, const SFtpRequest& request, std::string& errorText) {
            return session.ReadModified(request, time, errorText);
        },
        CURLE_NOT_BUILT_IN);
    return isKnown ? std::optional(time) : std::nullopt;
}

bool RemoteTree::setModified(const std::string& path, FileTime modified)
try {
    if (m_times != Known::No) {
        trySetModified(path, modified);
        m_times = Known::Yes;
    }
    return m_times == Known::Yes;
} catch (const TreeFailure& failure) {
    if (isUnknownCommand(failure)) {
        m_times = Known::No;
        return false;
    }
    const bool cannotBe = failure.code() == CURLE_BAD_FUNCTION_ARGUMENT; // a time that the protocol does not know
    if (!cannotBe && (failure.code() != CURLE_QUOTE_ERROR || isTransient(CURLE_QUOTE_ERROR, failure.reply(), {}))) {
        throw;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_refusedTimes.push_back({path, failure.code(), failure.what()});
    return false;
}

void RemoteTree::trySetModified(const std::string& path, FileTime modified) const
{
    run({urlOf(path)}, [modified](SFtpSession& session, const SFtpRequest& request, std::string& errorText) {
        return session.SetModified(request, modified, errorText);
    });
}

bool RemoteTree::keepsTimes()
try {
    if (m_times == Known::Unknown) {
        trySetModified(kNobody, FileTime());
        m_times = Known::Yes;
    }
    return m_times == Known::Yes;
} catch (const TreeFailure& failure) {
    if (!isUnknownCommand(failure) && failure.code() != CURLE_QUOTE_ERROR) {
        throw;
    }
    m_times = isUnknownCommand(failure) ? Known::No : Known::Yes;
    return m_times == Known::Yes;
}

std::vector<FailedPath> RemoteTree::refusedTimes() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_refusedTimes;
}

std::optional<RemoteChecksum> RemoteTree::checksum(const std::string& path)
try {
    if (m_checksums == Known::No) {
        return std::nullopt;
    }
    RemoteChecksum found;
    run({urlOf(path)}, [&found](SFtpSession& session, const SFtpRequest& request, std::string& errorText) {
        return session.ReadChecksum(request, found, errorText);
    });
    return found;
} catch (const TreeFailure& failure) {
    if (!isUnknownCommand(failure)) {
        throw;
    }
    m_checksums = Known::No;
    return std::nullopt;
}
