#ifndef SFTPCLIENT_CLI_TREE_LOCALTREE_H
#define SFTPCLIENT_CLI_TREE_LOCALTREE_H

#include "base/Descriptor.h"
#include "tree/Names.h"
#include "tree/TreeListing.h"

#include <curl/curl.h>
#include <sys/stat.h>

#include <functional>
#include <string>

/// A tree of local files. Every path is walked name by name, without following a link: none leads out of the tree,
/// whoever made the names. Each function throws `TreeFailure`: 26 where something cannot be read, 23 where it cannot be
/// written. Any number of threads may call at the same time.
class LocalTree : public Destination
{
public:
    /// Throws where `root` is no directory, unless it `isMissing`: then it is to be made first. `root` itself may be a
    /// link.
    explicit LocalTree(std::string root, bool isMissing = false);

    /// `isMissing` where the tree is not there; a part of it after a signal. `failed` gets directories that cannot be
    /// read.
    using OnFailure = std::function<void(const std::string& path, const TreeFailure& failure)>;
    static TreeListing list(const std::string& root, const Exclusions& exclusions, const OnFailure& failed);

    void makeDirectory(const std::string& path) override;
    void removeFile(const std::string& path) override;
    void removeDirectory(const std::string& path) override;

    /// A file that is being read.
    class Leaving
    {
    public:
        Leaving(const LocalTree& tree, const std::string& path);
        Leaving(const Leaving&) = delete;
        Leaving& operator=(const Leaving&) = delete;

        /// A path of the open file itself, whatever becomes of its name.
        std::string path() const;
        FileTime modified() const;
        /// Whether it is no longer what it was at the beginning, or another one has its name.
        bool hasChanged() const;
        int descriptor() const { return m_file.get(); }

    private:
        bool isStill(const struct stat& now) const;

        Descriptor m_folder;
        std::string m_name;
        Descriptor m_file;
        struct stat m_status = {};
    };

    /// A file that is to come: it arrives under a hidden name and gets its own when it is whole.
    class Arriving
    {
    public:
        /// `salt`: see `arrivingName`.
        Arriving(const LocalTree& tree, const std::string& path, const std::string& salt);
        /// Removes what did not take its place.
        ~Arriving();
        Arriving(const Arriving&) = delete;
        Arriving& operator=(const Arriving&) = delete;

        /// Where it is to be written.
        std::string path() const;
        /// Gives it its time, where that is known, and its name.
        void takePlace(const std::optional<FileTime>& modified);

    private:
        void takeModeOf(const std::string& name) const;

        Descriptor m_folder;
        std::string m_name;
        std::string m_temporary;
    };

    void setModified(const std::string& path, FileTime modified) const;

private:
    void makeRoot();
    void remove(const std::string& path, int flags, const std::string& what) const;
    Descriptor openFolder(const std::string& path, int failure = CURLE_WRITE_ERROR) const;

    std::string m_path;
    Descriptor m_root;
};

/// The time that the file system has.
FileTime timeOf(const struct stat& status);

#endif
