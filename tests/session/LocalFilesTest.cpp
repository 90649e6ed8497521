// The local files of a session: what it writes and what it reads.
#include <call/Call.h>
#include <call/Failure.h>
#include <call/StopSwitch.h>
#include <files/LocalFiles.h>

#include "support/NextFunction.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

namespace {

using namespace session;

// How the system's functions fail.
bool changesModes = true;
bool changesOwners = true;

} // namespace

extern "C" int fchmod(int descriptor, mode_t mode) noexcept
{
    return changesModes ? nextFunction<int(int, mode_t)>("fchmod")(descriptor, mode) : 0;
}

extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept
{
    if (changesOwners) {
        return nextFunction<int(int, uid_t, gid_t)>("fchown")(descriptor, owner, group);
    }
    errno = EPERM;
    return -1;
}

constexpr std::int64_t kFiveGibibytes = 5368709120;

class Arriving : public testing::Test
{
protected:
    std::string path(const std::string& name) const { return folder.file(name); }
    long files() const { return std::distance(std::filesystem::directory_iterator(path("")), {}); }

    TemporaryFolder folder;
    SessionOptions options;
    StopSwitch stop;
    Call call{options, stop};
};

TEST_F(Arriving, TakesItsPlaceOrLeavesNothing)
{
    writeFile(path("a"), "before");
    chmod(path("a").c_str(), 06640); // what a server sends gets no set-user-ID
    {
        ArrivingFile file(path("a"), call);
        file.write("after", 5);
    }
    EXPECT_EQ("before", contentOf(path("a")));
    EXPECT_EQ(1, files());
    {
        ArrivingFile file(path("a"), call);
        file.write("after", 5);
        file.takePlace(true);
    }
    EXPECT_EQ("after", contentOf(path("a")));
    EXPECT_EQ(1, files());
    struct stat status = {};
    stat(path("a").c_str(), &status);
    EXPECT_EQ(0640U, status.st_mode & 07777U);
}

// From the moment when it is made: who has opened a file can read it later, too.
TEST_F(Arriving, IsTheUsersAloneUntilItTakesThePlaceOfAnother)
{
    writeFile(path("a"), "before");
    for (const std::string version : {"", "version"}) {
        changesModes = false;
        const ArrivingFile file(path("a"), call, version);
        changesModes = true;
        for (const auto& each : std::filesystem::directory_iterator(path(""))) {
            if (each.path().filename() != "a") {
                EXPECT_EQ(std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
                          each.status().permissions())
                    << each;
            }
        }
    }
}

TEST_F(Arriving, OpensNothingToItsOwnGroupThatAnotherGroupHad)
{
    for (const auto& [before, after] : {std::pair(0640U, 0600U), std::pair(0664U, 0644U), std::pair(04755U, 0755U)}) {
        writeFile(path("a"), "before");
        chmod(path("a").c_str(), before);
        ArrivingFile file(path("a"), call);
        changesOwners = false;
        file.takePlace(false);
        changesOwners = true;
        struct stat status = {};
        stat(path("a").c_str(), &status);
        EXPECT_EQ(after, status.st_mode & 07777U);
    }
}

TEST_F(Arriving, WaitsForAPipesOtherEndAsLongAsTheCallMay)
{
    ASSERT_EQ(0, mkfifo(path("p").c_str(), 0600));
    {
        const int reader = open(path("p").c_str(), O_RDONLY | O_NONBLOCK);
        ArrivingFile file(path("p"), call);
        file.write("bytes", 5);
        file.takePlace(true);
        char read_[6] = {};
        EXPECT_EQ(5, read(reader, read_, sizeof read_));
        EXPECT_STREQ("bytes", read_);
        stop.turnOn();
        const std::string more(1 << 20, 'x'); // no pipe holds so much
        EXPECT_THROW(file.write(more.data(), more.size()), Failure);
        close(reader);
    }
    try {
        ArrivingFile file(path("p"), call);
        ADD_FAILURE() << "nobody reads";
    } catch (const Failure& failure) {
        EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, failure.code());
        EXPECT_NE(std::string::npos, std::string(failure.what()).find("nobody read from localPath " + path("p")));
    }
    EXPECT_EQ(1, files());
}

// As /dev/stdout leads to the one behind it, which has no name in any folder.
TEST_F(Arriving, WritesToAPipeThatOnlyTheProcessCanName)
{
    int ends[2] = {};
    ASSERT_EQ(0, pipe(ends));
    std::filesystem::create_symlink("/dev/fd/" + std::to_string(ends[1]), path("l"));
    for (const std::string& name : {"/dev/fd/" + std::to_string(ends[1]), path("l")}) {
        ArrivingFile file(name, call);
        file.write("bytes", 5);
        file.takePlace(true);
        char bytes[6] = {};
        EXPECT_EQ(5, read(ends[0], bytes, sizeof bytes));
        EXPECT_STREQ("bytes", bytes);
    }
    close(ends[0]);
    close(ends[1]);
}

// Where a long has 32 bits too.
TEST_F(Arriving, GoesOnBehindFiveGibibytes)
{
    {
        ArrivingFile file(path("a"), call, "version");
        file.write("x", 1);
    }
    ASSERT_EQ(1, files());
    std::filesystem::resize_file(*std::filesystem::directory_iterator(path("")), kFiveGibibytes);
    {
        ArrivingFile file(path("a"), call, "version");
        EXPECT_EQ(kFiveGibibytes, file.size());
        file.write("end", 3);
        EXPECT_EQ(std::string("\0\0end", 5), file.part(kFiveGibibytes - 2, 5));
        file.takePlace(false);
    }
    EXPECT_EQ(static_cast<std::uintmax_t>(kFiveGibibytes) + 3, std::filesystem::file_size(path("a")));
}

TEST(LeavingFile, MayHoldFiveGibibytes)
{
    const TemporaryFolder folder;
    writeFile(folder.file("a"), "begin");
    std::filesystem::resize_file(folder.file("a"), kFiveGibibytes);
    {
        std::fstream stream(folder.file("a"), std::ios::in | std::ios::out);
        stream.seekp(kFiveGibibytes - 3);
        stream << "end";
    }
    const LeavingFile file(folder.file("a"));
    EXPECT_EQ(kFiveGibibytes, file.size());
    EXPECT_EQ("nd", file.part(kFiveGibibytes - 2, 5));
    ASSERT_TRUE(file.seek(kFiveGibibytes - 3));
    std::string bytes(5, '.');
    EXPECT_EQ(3U, file.read(bytes.data(), bytes.size()));
    EXPECT_EQ("end..", bytes);
}

// Nobody can open it, ever: there is nothing to wait for.
TEST_F(Arriving, DoesNotWaitForASocket)
{
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path("s").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(0, bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    EXPECT_THROW(ArrivingFile(path("s"), call), Failure);
    close(listener);
}

TEST_F(Arriving, FollowsALink)
{
    writeFile(path("a"), "before");
    std::filesystem::create_symlink("a", path("l"));
    ArrivingFile file(path("l"), call);
    file.write("after", 5);
    file.takePlace(true);
    EXPECT_EQ("after", contentOf(path("a")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("l")));
}

// A link is the user's way to another disk, whatever is there.
TEST_F(Arriving, FollowsALinkToAFileThatIsMissing)
{
    std::filesystem::create_directory(path("d"));
    std::filesystem::create_symlink("d/second", path("first"));
    std::filesystem::create_symlink(path("d/third"), path("d/second"));
    ArrivingFile file(path("first"), call);
    file.write("new", 3);
    file.takePlace(true);
    EXPECT_EQ("new", contentOf(path("d/third")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("first")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("d/second")));
    EXPECT_FALSE(std::filesystem::is_symlink(path("d/third")));
}

TEST_F(Arriving, DoesNotReplaceALinkThatLeadsNowhere)
{
    std::filesystem::create_symlink("no/such", path("l"));
    std::filesystem::create_symlink("circle", path("circle"));
    for (const std::string name : {"l", "circle"}) {
        EXPECT_THROW(ArrivingFile(path(name), call), Failure) << name;
        EXPECT_TRUE(std::filesystem::is_symlink(path(name))) << name;
    }
}

TEST_F(Arriving, NamesWhatCannotBeWritten)
{
    std::filesystem::create_directory(path("d"));
    for (const std::string& where : {path("d"), path("no/such")}) {
        try {
            ArrivingFile file(where, call);
            ADD_FAILURE() << where;
        } catch (const Failure& failure) {
            EXPECT_EQ(CURLE_WRITE_ERROR, failure.code());
            EXPECT_NE(std::string::npos, std::string(failure.what()).find(where)) << failure.what();
        }
    }
}
