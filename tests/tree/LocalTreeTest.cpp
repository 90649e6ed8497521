// Local paths: none leads through a link, also one that came after the tree was listed.
#include "support/TreeFiles.h"

#include "support/OtherUser.h"
#include "support/TemporaryFolder.h"

#include <operation/Interruption.h>
#include <tree/LocalTree.h>

#include <curl/curl.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <vector>

namespace fs = std::filesystem;

namespace {

class LocalTrees : public testing::Test
{
protected:
    LocalTrees()
    {
        plant(root(), {{"a", "mine"}, {"d/x", "mine"}});
        plant(folder.file("outside"), {{"x", "secret"}, {"empty/", ""}});
        fs::create_symlink(folder.file("outside"), root() + "/link");
        fs::create_symlink(folder.file("outside/x"), root() + "/file");
        fs::create_symlink("../link", root() + "/d/up");
    }
    ~LocalTrees() override
    {
        EXPECT_TRUE(sameTrees({{"x", "secret"}, {"empty/", ""}}, treeIn(folder.file("outside"))));
    }

    std::string root() const { return folder.file("root"); }

    template <typename Step>
    static int codeOf(Step step)
    {
        try {
            step();
        } catch (const TreeFailure& failure) {
            return failure.code();
        }
        return 0;
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(LocalTrees, AreNotLeftThroughALink)
{
    LocalTree tree(root());
    for (const std::string way : {"link/", "d/up/"}) {
        SCOPED_TRACE(way);
        EXPECT_EQ(23, codeOf([&] { tree.makeDirectory(way + "new"); }));
        EXPECT_EQ(23, codeOf([&] { tree.removeFile(way + "x"); }));
        EXPECT_EQ(23, codeOf([&] { tree.removeDirectory(way + "empty"); }));
        EXPECT_EQ(23, codeOf([&] { tree.setModified(way + "x", FileTime()); }));
        EXPECT_NE(0, codeOf([&] { const LocalTree::Leaving file(tree, way + "x"); }));
        EXPECT_EQ(23, codeOf([&] { const LocalTree::Arriving file(tree, way + "x", ""); }));
    }
    EXPECT_EQ(26, codeOf([&] { const LocalTree::Leaving file(tree, "file"); }));
    EXPECT_EQ(23, codeOf([&] { const LocalTree::Arriving file(tree, "file", ""); }));
    tree.setModified("file", FileTime());
    EXPECT_NE(0, modified(folder.file("outside/x")));
}

TEST_F(LocalTrees, AFileArrivesWholeWithItsTimeOrNotAtAll)
{
    const LocalTree tree(root());
    {
        LocalTree::Arriving file(tree, "d/new", "");
        writeFile(file.path(), "content");
        EXPECT_FALSE(fs::exists(root() + "/d/new"));
        file.takePlace(std::chrono::system_clock::from_time_t(1700000000));
    }
    EXPECT_EQ("content", contentOf(root() + "/d/new"));
    EXPECT_EQ(1700000000, modified(root() + "/d/new"));
    {
        const LocalTree::Arriving file(tree, "d/x", "");
        writeFile(file.path(), "half");
    }
    EXPECT_TRUE(sameTrees({{"new", "content"}, {"up", "-> ../link"}, {"x", "mine"}}, treeIn(root() + "/d")));
}

// A link that came while the file arrived is replaced, not followed.
TEST_F(LocalTrees, AFileTakesThePlaceOfALinkThatCameMeanwhile)
{
    const LocalTree tree(root());
    LocalTree::Arriving file(tree, "new", "");
    writeFile(file.path(), "content");
    fs::create_symlink(folder.file("outside/x"), root() + "/new");
    file.takePlace(std::nullopt);
    EXPECT_FALSE(fs::is_symlink(root() + "/new"));
    EXPECT_EQ("content", contentOf(root() + "/new"));
}

TEST_F(LocalTrees, AFileThatIsSentIsTheOneThatWasOpened)
{
    const LocalTree tree(root());
    const LocalTree::Leaving file(tree, "a");
    EXPECT_FALSE(file.hasChanged());
    fs::rename(root() + "/a", root() + "/b");
    EXPECT_TRUE(file.hasChanged());
    fs::create_symlink(folder.file("outside/x"), root() + "/a");
    EXPECT_EQ("mine", contentOf(file.path()));
    EXPECT_TRUE(file.hasChanged());
    fs::rename(root() + "/b", root() + "/a");
    EXPECT_FALSE(file.hasChanged());
    writeFile(root() + "/a", "longer than before");
    EXPECT_TRUE(file.hasChanged());
}

TEST_F(LocalTrees, AFileWhoseDirectoryIsGoneCannotBeRead)
{
    const LocalTree tree(root(), false);
    EXPECT_EQ(26, codeOf([&] { const LocalTree::Leaving file(tree, "gone/x"); }));
    EXPECT_EQ(23, codeOf([&] { const LocalTree::Arriving file(tree, "gone/x", ""); }));
}

// As a file has whose clock was wrong. Beyond what a FileTime holds, it would be another one with each arithmetic.
TEST(LocalTimes, BeyondTheirEndsAreTheEnds)
{
    struct stat status = {};
    status.st_mtim = {16725225600, 5}; // the year 2500
    EXPECT_EQ(9223372035, timeOf(status).time_since_epoch() / std::chrono::seconds(1));
    status.st_mtim = {-16725225600, 5};
    EXPECT_EQ(-9223372034, timeOf(status).time_since_epoch() / std::chrono::seconds(1));
}

TEST_F(LocalTrees, AreListedWithoutWhatIsBehindLinks)
{
    std::vector<std::string> failed;
    ASSERT_EQ(0, mkfifo((root() + "/pipe").c_str(), 0600));
    const TreeListing listing =
        LocalTree::list(root(), Exclusions({"x"}),
                        [&failed](const std::string& path, const TreeFailure& /*failure*/) { failed.push_back(path); });
    std::vector<std::string> names;
    for (const auto& each : listing.entries) {
        names.push_back(each.first);
    }
    EXPECT_EQ((std::vector<std::string>{"a", "d"}), names);
    EXPECT_EQ((std::set<std::string>{"d/up", "file", "link", "pipe"}),
              std::set<std::string>(listing.links.begin(), listing.links.end()));
    EXPECT_EQ(std::vector<std::string>{"d/x"}, listing.excluded);
    EXPECT_EQ(std::vector<std::string>{}, failed);
    EXPECT_TRUE(LocalTree::list(folder.file("missing"), Exclusions({}), {}).isMissing);
    EXPECT_EQ(26, codeOf([&] { LocalTree::list(root() + "/a", Exclusions({}), {}); }));
}

// Its names can be read, but nothing else: they are not taken for missing, or --delete would delete the others.
TEST_F(LocalTrees, ADirectoryThatCannotBeEnteredIsAFailure)
{
    fs::permissions(folder.path(), fs::perms(0711));
    fs::permissions(root(), fs::perms(0755));
    fs::permissions(root() + "/d", fs::perms(0444));
    std::vector<std::string> failed;
    {
        const OtherUser user;
        LocalTree::list(root(), Exclusions({}), [&failed](const std::string& path, const TreeFailure& failure) {
            EXPECT_EQ(26, failure.code());
            failed.push_back(path);
        });
    }
    fs::permissions(root() + "/d", fs::perms(0755));
    EXPECT_EQ(std::vector<std::string>{"d"}, failed);
}

TEST_F(LocalTrees, AreNotListedAfterASignal)
{
    {
        const Interruption interruption;
        std::raise(SIGINT);
        EXPECT_TRUE(LocalTree::list(root(), Exclusions({}), {}).entries.empty());
    }
    const Interruption forgotten;
    EXPECT_FALSE(LocalTree::list(root(), Exclusions({}), {}).entries.empty());
}

TEST_F(LocalTrees, AreNotListedWithoutEnd)
{
    std::string deep = root();
    for (unsigned i = 0; i <= kDeepest; ++i) {
        deep += "/n";
    }
    fs::create_directories(deep);
    std::vector<std::string> failed;
    LocalTree::list(root(), Exclusions({}), [&failed](const std::string& path, const TreeFailure& failure) {
        EXPECT_EQ(26, failure.code());
        failed.push_back(path);
    });
    ASSERT_EQ(1U, failed.size());
    EXPECT_EQ(2 * kDeepest + 1, failed[0].size());
}
