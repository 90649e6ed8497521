#include "tree/Direction.h"

#include <curl/curl.h>

#include <utility>

namespace {

constexpr int kAttempts = 3; // to send a file that changes meanwhile

class Push : public Direction
{
public:
    using Direction::Direction;

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

private:
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

class Pull : public Direction
{
public:
    Pull(LocalTree& local, RemoteTree& remote, std::string salt) : Direction(local, remote), m_salt(std::move(salt)) {}

    // The time is asked for first: a file that changes meanwhile is fetched again the next time.
    void move(const Move& move) override
    {
        const std::optional<FileTime> time = move.from.modified ? move.from.modified : remote().modified(move.path);
        LocalTree::Arriving file(local(), move.path, m_salt);
        remote().fetch(move.path, file.path());
        file.takePlace(time);
    }

private:
    FileTime timeHere(const Move& move) const override { return *move.to->modified; }
    const TreeEntry& entryThere(const Move& move) const override { return move.from; }
    void adoptTime(const std::string& path, FileTime /*here*/, FileTime there) override
    {
        local().setModified(path, there);
    }
    bool isNewEnough(const Move& /*move*/, FileTime /*there*/) override { return false; }

    std::string m_salt;
};

} // namespace

bool Direction::isSame(const Move& move, bool mayChange, const IsEnding& isEnding)
{
    if (move.question == Question::Checksum && holdsSame(move.path, isEnding)) {
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

std::optional<FileTime> Direction::timeThere(const Move& move) const
{
    const TreeEntry& entry = entryThere(move);
    return entry.modified ? entry.modified : m_remote.modified(move.path);
}

bool Direction::holdsSame(const std::string& path, const IsEnding& isEnding) const
{
    const std::optional<RemoteChecksum> checksum = m_remote.checksum(path);
    const LocalTree::Leaving file(m_local, path);
    return checksum && checksumOf(file.descriptor(), checksum->kind, isEnding) == checksum->digits;
}

std::unique_ptr<Direction> makePush(LocalTree& local, RemoteTree& remote)
{
    return std::make_unique<Push>(local, remote);
}

std::unique_ptr<Direction> makePull(LocalTree& local, RemoteTree& remote, const std::string& salt)
{
    return std::make_unique<Pull>(local, remote, salt);
}
