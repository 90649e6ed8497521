#ifndef SFTPCLIENT_CLI_TREE_REMOTETREE_H
#define SFTPCLIENT_CLI_TREE_REMOTETREE_H

#include "output/PasswordMask.h"
#include "tree/TreeListing.h"

#include <SFtpRequest.h>
#include <SFtpSession.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// A tree on the server, on one session. Each function throws `TreeFailure` where the server does not go along; its
/// text hides the password. Any number of threads may call at the same time.
class RemoteTree : public Destination
{
public:
    /// `request` points at the tree. All three are used as long as the object lives.
    RemoteTree(SFtpSession& session, const SFtpRequest& request, const PasswordMask& mask);

    /// Nothing where there is no such directory.
    std::optional<std::vector<RemoteEntry>> list(const std::string& path) const;

    /// Succeeds where the directory is there already.
    void makeDirectory(const std::string& path) override;
    void removeFile(const std::string& path) override;
    void removeDirectory(const std::string& path) override;

    void send(const std::string& localPath, const std::string& path) const;
    void fetch(const std::string& path, const std::string& localPath) const;

    /// When the file was modified; nothing where the server cannot tell.
    std::optional<FileTime> modified(const std::string& path) const;
    /// Whether the file has this time now: not where the server sets no times, or refuses this one for good.
    bool setModified(const std::string& path, FileTime modified);
    /// Whether the server sets times, as far as it tells; nothing is changed.
    bool keepsTimes();
    /// The files whose times the server refused to set, and why.
    std::vector<FailedPath> refusedTimes() const;

    /// Nothing where the server computes none.
    std::optional<RemoteChecksum> checksum(const std::string& path);
    /// Whether it was asked for one in vain.
    bool lacksChecksums() const { return m_checksums == Known::No; }

private:
    enum class Known
    {
        Unknown,
        Yes,
        No
    };
    /// What a call is about.
    struct Target
    {
        std::string url;
        std::string name = {};
        std::string localPath = {};
    };
    using Call = std::function<int(SFtpSession& session, const SFtpRequest& request, std::string& errorText)>;

    /// False where it fails with the code `excused`.
    bool run(const Target& target, const Call& call, int excused = 0) const;
    void trySetModified(const std::string& path, FileTime modified) const;
    std::string urlOf(const std::string& path) const;
    void makeAll(const std::string& url) const;

    SFtpSession& m_session;
    const SFtpRequest& m_request;
    const PasswordMask& m_mask;
    std::string m_root; // its URL, with a "/" at its end
    std::atomic<Known> m_times{Known::Unknown};
    std::atomic<Known> m_checksums{Known::Unknown};
    mutable std::mutex m_mutex; // for what follows
    std::vector<FailedPath> m_refusedTimes;
};

#endif
