// Trees whose moving is killed again and again, at moments all over a run.
#include "harness/Trees.h"

#include <chrono>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

namespace {

constexpr int kKills = 50;
constexpr int kFewerKills = 15;

class KilledTrees : public Trees
{
protected:
    // A tree of small files, all of them new or different from round to round, and what becomes of it.
    Tree nextTree()
    {
        Tree tree = {{"empty/", ""}};
        for (int i = 0; i < 12; ++i) {
            const std::string path = (i % 3 == 0   ? ""
                                      : i % 3 == 1 ? "one/"
                                                   : "one/two/") +
                                     std::string("file") + std::to_string(i);
            if (m_random() % 6 != 0) {
                tree[path] = std::to_string(m_random()) + std::string(m_random() % 30000, static_cast<char>('a' + i));
                m_versions[path].insert(tree[path]);
            }
        }
        return tree;
    }

    void change(const std::string& root)
    {
        std::filesystem::remove_all(root);
        plant(root, nextTree());
        for (const auto& [path, time] : timesIn(root)) {
            setModified(root + "/" + path, ++m_time);
            m_time += 2;
        }
    }

    // What has its name is whole.
    void expectWholeFiles(const std::string& root) const
    {
        for (const auto& [path, content] : treeIn(root)) {
            const auto versions = m_versions.find(path);
            EXPECT_TRUE(versions == m_versions.end() || versions->second.count(content) == 1)
                << path << ": " << content.size() << " bytes, " << content.substr(0, 20);
        }
    }

    void killAllOverARun(const Words& form, const std::string& source, const std::string& destination,
                         int kills = kKills)
    {
        using Clock = std::chrono::steady_clock;
        ProcessSetup setup = setupOf(form);
        setup.out = setup.err = "/dev/null";
        change(source);
        const auto begin = Clock::now();
        ASSERT_EQ(0, Process(setup).wait());
        Clock::duration whole = Clock::now() - begin;
        int killed = 0;
        for (int i = 0; i < kills; ++i) {
            change(source);
            Process command(setup);
            std::this_thread::sleep_for(whole * (1 + (i * 17) % kills) / kills);
            command.signal(SIGKILL);
            if (command.wait() == -SIGKILL) {
                ++killed;
            } else {
                whole = whole * 3 / 4; // the machine is faster now
            }
            sessions(); // what the server is still doing, such as a last deletion, is over
            expectWholeFiles(destination);
        }
        EXPECT_LT(kills / 4, killed) << "the others had come to their end";
        EXPECT_EQ(0, Process(setup).wait());
        EXPECT_TRUE(sameTrees(treeIn(source), treeIn(destination)));
        EXPECT_EQ(timesIn(source), timesIn(destination));
    }

private:
    std::mt19937 m_random{20261122};
    std::time_t m_time = 1700000000;
    std::map<std::string, std::set<std::string>> m_versions;
};

} // namespace

TEST_F(KilledTrees, AreEqualAfterOneMorePush)
{
    serve();
    killAllOverARun({"push", "here", url("/there/"), "--delete"}, here(), there());
}

TEST_F(KilledTrees, AreEqualAfterOneMorePull)
{
    serve();
    killAllOverARun({"pull", url("/there/"), "here", "--delete"}, there(), here());
}

TEST_F(KilledTrees, AreEqualAfterOneMorePushThatResumes)
{
    serve();
    killAllOverARun({"push", "here", url("/there/"), "--delete", "--resume"}, here(), there(), kFewerKills);
}

TEST_F(KilledTrees, AreEqualAfterOneMorePullThatResumes)
{
    serve();
    killAllOverARun({"pull", url("/there/"), "here", "--delete", "--resume"}, there(), here(), kFewerKills);
}
