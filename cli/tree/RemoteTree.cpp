#include "tree/RemoteTree.h"

#include "base/PercentCode.h"
#include "base/WipedAtEnd.h"
#include "operation/Retry.h"
#include "operation/SessionOptionsOf.h"

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
    if (m_root.compare(0, 5, "sftp:") == 0) {
        m_times = Known::Yes;
        m_checksums = Known::No;
    }
}

int RemoteTree::call(const std::string& url, const std::string& name, const std::string& localPath, const Call& call,
                     std::string& text) const
{
    SFtpRequest request = m_request;
    const WipedAtEnd wiped(request.password);
    request.remotePath = url;
    request.remoteFileName = name;
    request.localPath = localPath;
    const int code = call(request, text);
    text = m_mask.hiddenIn(withOptionNames(withoutLocalPath(text, localPath)));
    return code;
}

void RemoteTree::run(const std::string& url, const std::string& name, const std::string& localPath,
                     const Call& operation) const
{
    std::string text;
    if (const int code = call(url, name, localPath, operation, text)) {
        throw TreeFailure(code, text);
    }
}

std::string RemoteTree::urlOf(const std::string& path) const { return m_root + encoded(path); }

std::optional<std::vector<RemoteEntry>> RemoteTree::list(const std::string& path) const
{
    std::vector<RemoteEntry> entries;
    std::string text;
    const std::string url = path.empty() ? m_root : urlOf(path) + "/";
    const int code = call(
        url, "", "",
        [&](const SFtpRequest& request, std::string& errorText) {
            return m_session.ListEntries(request, entries, errorText);
        },
        text);
    if (code == CURLE_REMOTE_FILE_NOT_FOUND) {
        return std::nullopt;
    }
    if (code != 0) {
        throw TreeFailure(code, text);
    }
    return entries;
}

void RemoteTree::makeDirectory(const std::string& path) const
{
    if (path.empty()) {
        makeAll(m_root);
        return;
    }
    try {
        run(urlOf(path) + "/", "", "", [this](const SFtpRequest& request, std::string& errorText) {
            return m_session.MakeSFtpDir(request, errorText);
        });
    } catch (const TreeFailure& failure) {
        // Some servers do not list names that begin with a dot.
        if (failure.code() != CURLE_QUOTE_ERROR || !list(path)) {
            throw;
        }
    }
}

void RemoteTree::makeAll(const std::string& url) const
{
    const auto make = [&] {
        run(url, "", "", [this](const SFtpRequest& request, std::string& errorText) {
            return m_session.MakeSFtpDir(request, errorText);
        });
    };
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

void RemoteTree::removeFile(const std::string& path) const
{
    const auto [parent, name] = splitPath(path);
    const std::string url = parent.empty() ? m_root : urlOf(parent) + "/";
    run(url, name, "", [this](const SFtpRequest& request, std::string& errorText) {
        return m_session.DelSFtpFile(request, errorText);
    });
}

void RemoteTree::removeDirectory(const std::string& path) const
{
    run(urlOf(path) + "/", "", "", [this](const SFtpRequest& request, std::string& errorText) {
        return m_session.RemoveSFtpDir(request, errorText);
    });
}

void RemoteTree::send(const std::string& localPath, const std::string& path) const
{
    run(urlOf(path), "", localPath, [this](const SFtpRequest& request, std::string& errorText) {
        return m_session.UploadFileToSFtpServer(request, errorText);
    });
}

void RemoteTree::fetch(const std::string& path, const std::string& localPath) const
{
    run(urlOf(path), "", localPath, [this](const SFtpRequest& request, std::string& errorText) {
        return m_session.DownLoadSFtpFile(request, errorText);
    });
}

std::optional<FileTime> RemoteTree::modified(const std::string& path) const
{
    FileTime time;
    std::string text;
    const int code = call(
        urlOf(path), "", "",
        [&](const SFtpRequest& request, std::string& errorText) {
            return m_session.ReadModified(request, time, errorText);
        },
        text);
    if (code != 0 && code != CURLE_NOT_BUILT_IN) {
        throw TreeFailure(code, text);
    }
    return code == 0 ? std::optional(time) : std::nullopt;
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
    if (failure.code() != CURLE_QUOTE_ERROR || isTransient(CURLE_QUOTE_ERROR, failure.reply())) {
        throw;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_refusedTimes.push_back({path, failure.code(), failure.what()});
    return false;
}

void RemoteTree::trySetModified(const std::string& path, FileTime modified) const
{
    run(urlOf(path), "", "", [&](const SFtpRequest& request, std::string& errorText) {
        return m_session.SetModified(request, modified, errorText);
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
{
    if (m_checksums == Known::No) {
        return std::nullopt;
    }
    RemoteChecksum found;
    std::string text;
    const int code = call(
        urlOf(path), "", "",
        [&](const SFtpRequest& request, std::string& errorText) {
            return m_session.ReadChecksum(request, found, errorText);
        },
        text);
    if (code == CURLE_NOT_BUILT_IN) {
        m_checksums = Known::No;
        return std::nullopt;
    }
    if (code != 0) {
        throw TreeFailure(code, text);
    }
    return found;
}
