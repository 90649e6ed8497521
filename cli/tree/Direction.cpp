#include "tree/Direction.h"

#include "tree/Checksum.h"

#include <curl/curl.h>

#include <filesystem>
#include <optional>
#include <utility>

namespace {

constexpr int kAttempts = 3; // to send a file that changes meanwhile

/// What both ways have in common.
class BothWays : public Direction
{
public:
    BothWays(std::string root, RemoteTree& remote) : m_root(std::move(root)), m_remote(remote)
    {
        if (std::filesystem::exists(m_root)) {
            openLocal();
        }
    }

    bool isSame(const Move& move, bool mayChange) override
    {
        if (move.question == Question::Checksum && holdsSame(move.path)) {
            const FileTime time = timeHere(move);
            const std::optional<FileTime> there = timeThere(move);
            if (mayChange && there && !areSameTimes(time, *there)) {
                adoptTime(move.path, time, *there);
            }
            return true;
        }
        // A server that computes no checksums.
        if (move.question == Question::None || (move.question == Question::Checksum && !m_remote.lacksChecksums())) {
            return false;
        }
        const std::optional<FileTime> there = timeThere(move);
        return !there || areSameTimes(timeHere(move), *there) || isNewEnough(move, *there);
    }

protected:
    LocalTree& local() const { return *m_local; }
    RemoteTree& remote() const { return m_remote; }
    const std::string& root() const { return m_root; }
    void openLocal() { m_local = std::make_unique<LocalTree>(m_root); }

    /// The local file's time, and the server's.
    virtual FileTime timeHere(const Move& move) const = 0;
    virtual const TreeEntry& entryThere(const Move& move) const = 0;
    /// Gives the destination the source's time.
    virtual void adoptTime(const std::string& path, FileTime here, FileTime there) = 0;
    /// Whether times that differ are those of the same file.
    virtual bool isNewEnough(const Move& move, FileTime there) = 0;

private:
    std::optional<FileTime> timeThere(const Move& move) const
    {
        const TreeEntry& entry = entryThere(move);
        return entry.modified ? entry.modified : m_remote.modified(move.path);
    }

    bool holdsSame(const std::string& path) const
    {
        const std::optional<RemoteChecksum> checksum = m_remote.checksum(path);
        const LocalTree::Leaving file(*m_local, path);
        return checksum && checksumOf(file.descriptor(), checksum->kind) == checksum->digits;
    }

    std::string m_root;
    RemoteTree& m_remote;
    std::unique_ptr<LocalTree> m_local;
};

class Push : public BothWays
{
public:
    using BothWays::BothWays;

    void makeDirectory(const std::string& path) override { remote().makeDirectory(path); }
    void removeFile(const std::string& path) override { remote().removeFile(path); }
    void removeDirectory(const std::string& path) override { remote().removeDirectory(path); }
    int codeOfBlocked() const override { return CURLE_UPLOAD_FAILED; }

    void move(const Move& move) override
    {
        bool isTorn = false; // what the server has: of two versions
        try {
            for (int i = 0; i < kAttempts; ++i) {
                const LocalTree::Leaving file(local(), move.path);
                remote().send(file.path(), move.path);
                isTorn = file.hasChanged();
                if (!isTorn) {
                    remote().setModified(move.path, file.modified());
                    return;
                }
            }
        } catch (const TreeFailure&) {
            if (isTorn) {
                disown(move.path);
            }
            throw;
        }
        disown(move.path);
        throw TreeFailure(CURLE_READ_ERROR, "the file has changed each time while it was sent");
    }

protected:
    FileTime timeHere(const Move& move) const override { return *move.from.modified; }
    const TreeEntry& entryThere(const Move& move) const override { return *move.to; }
    void adoptTime(const std::string& path, FileTime here, FileTime /*there*/) override
    {
        remote().setModified(path, here);
    }

    // Where times cannot be set, a file there has that of its arrival.
    bool isNewEnough(const Move& move, FileTime there) override
    {
        return there > timeHere(move) && !remote().keepsTimes();
    }

private:
    // Makes sure that the next run sends the file again.
    void disown(const std::string& path)
    {
        bool isMarked = false;
        try {
            isMarked = remote().setModified(path, FileTime());
        } catch (const TreeFailure&) { // what cannot be marked goes
        }
        try {
            if (!isMarked) {
                remote().removeFile(path);
            }
        } catch (const TreeFailure& failure) {
            throw TreeFailure(CURLE_READ_ERROR,
                              std::string("the file has changed while it was sent, and what the server has of it "
                                          "cannot be deleted: ") +
                                  failure.what());
        }
    }
};

class Pull : public BothWays
{
public:
    Pull(const std::string& root, RemoteTree& remote, std::string salt)
        : BothWays(root, remote), m_salt(std::move(salt))
    {
    }

    void makeDirectory(const std::string& path) override
    {
        if (path.empty()) {
            makeRoot();
        } else {
            local().makeDirectory(path);
        }
    }
    void removeFile(const std::string& path) override { local().removeFile(path); }
    void removeDirectory(const std::string& path) override { local().removeDirectory(path); }
    int codeOfBlocked() const override { return CURLE_WRITE_ERROR; }

    // The time is asked for first: a file that changes meanwhile is fetched again the next time.
    void move(const Move& move) override
    {
        const std::optional<FileTime> time = move.from.modified ? move.from.modified : remote().modified(move.path);
        LocalTree::Arriving file(local(), move.path, m_salt);
        remote().fetch(move.path, file.path());
        file.takePlace(time);
    }

protected:
    FileTime timeHere(const Move& move) const override { return *move.to->modified; }
    const TreeEntry& entryThere(const Move& move) const override { return move.from; }
    void adoptTime(const std::string& path, FileTime /*here*/, FileTime there) override
    {
        local().setModified(path, there);
    }
    bool isNewEnough(const Move& /*move*/, FileTime /*there*/) override { return false; }

private:
    void makeRoot()
    {
        std::error_code error;
        std::filesystem::create_directories(root(), error);
        if (error) {
            throw TreeFailure(CURLE_WRITE_ERROR, root() + " cannot be made: " + error.message());
        }
        openLocal();
    }

    std::string m_salt;
};

} // namespace

std::unique_ptr<Direction> makePush(const std::string& root, RemoteTree& remote)
{
    return std::make_unique<Push>(root, remote);
}

std::unique_ptr<Direction> makePull(const std::string& root, RemoteTree& remote, const std::string& salt)
{
    return std::make_unique<Pull>(root, remote, salt);
}
