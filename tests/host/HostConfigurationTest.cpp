#include "support/SetVariable.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <HostConfiguration.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr char kVariable[] = "SFTPCLIENT_CONFIG";

class HostConfigurationTest : public testing::Test
{
protected:
    std::string value(const std::string& key = "Key")
    {
        return m_configuration.values()->find("General", key).value_or("none");
    }

    TemporaryFolder m_folder;
    HostConfiguration m_configuration;
};

TEST_F(HostConfigurationTest, HasNoValuesWithoutAFile)
{
    for (const char* const name : {static_cast<const char*>(nullptr), ""}) {
        const SetVariable variable(kVariable, name);
        HostConfiguration configuration;
        EXPECT_FALSE(configuration.values()->find("General", "Key"));
    }
}

TEST_F(HostConfigurationTest, ReadsOnceAndAgainOnRequest)
{
    const std::string path = m_folder.write("a.ini", "[General]\nKey=old\n");
    const SetVariable variable(kVariable, path.c_str());
    EXPECT_EQ("old", value());
    m_folder.write("a.ini", "[General]\nKey=new\n");
    EXPECT_EQ("old", value());
    m_configuration.reload();
    EXPECT_EQ("new", value());
}

TEST_F(HostConfigurationTest, PrefersTheFileThatTheHostNames)
{
    const std::string other = m_folder.write("variable.ini", "[General]\nKey=variable\n");
    const SetVariable variable(kVariable, other.c_str());
    m_configuration.load(m_folder.write("named.ini", "[General]\nKey=named\n"));
    EXPECT_EQ("named", value());
    m_folder.write("named.ini", "[General]\nKey=named anew\n");
    m_configuration.reload();
    EXPECT_EQ("named anew", value());
}

TEST_F(HostConfigurationTest, FollowsTheVariableOnReload)
{
    {
        const std::string path = m_folder.write("a.ini", "[General]\nKey=a\n");
        const SetVariable variable(kVariable, path.c_str());
        EXPECT_EQ("a", value());
    }
    const std::string path = m_folder.write("b.ini", "[General]\nKey=b\n");
    const SetVariable variable(kVariable, path.c_str());
    EXPECT_EQ("a", value());
    m_configuration.reload();
    EXPECT_EQ("b", value());
}

TEST_F(HostConfigurationTest, KeepsTheOldValuesWhenAReloadFails)
{
    const std::string path = m_folder.write("a.ini", "[General]\nKey=old\n");
    m_configuration.load(path);
    m_folder.write("a.ini", "[General]\nKey=new\nKey=newer\n");
    EXPECT_EQ(path + "(3): duplicate key name", thrownBy([this] { m_configuration.reload(); }));
    EXPECT_EQ("old", value());
    ASSERT_EQ(0, std::remove(path.c_str()));
    EXPECT_EQ(path + ": cannot open file", thrownBy([this] { m_configuration.reload(); }));
    EXPECT_EQ("old", value());
}

TEST_F(HostConfigurationTest, KeepsTheOldFileWhenAnotherCannotBeLoaded)
{
    m_configuration.load(m_folder.write("a.ini", "[General]\nKey=old\n"));
    EXPECT_EQ(m_folder.file("missing.ini") + ": cannot open file",
              thrownBy([this] { m_configuration.load(m_folder.file("missing.ini")); }));
    EXPECT_EQ("old", value());
    m_folder.write("a.ini", "[General]\nKey=new\n");
    m_configuration.reload();
    EXPECT_EQ("new", value());
}

TEST_F(HostConfigurationTest, ReloadsTheSameFileAfterAChangeOfDirectory)
{
    m_folder.write("a.ini", "[General]\nKey=old\n");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.path());
    m_configuration.load("a.ini");
    std::filesystem::current_path(before);
    EXPECT_EQ("old", value());
    m_folder.write("a.ini", "[General]\nKey=new\n");
    EXPECT_EQ(kNothingThrown, thrownBy([this] { m_configuration.reload(); }));
    EXPECT_EQ("new", value());
}

TEST_F(HostConfigurationTest, RejectsAnEndlessFile)
{
    EXPECT_EQ("/dev/zero: more than 16777216 bytes", thrownBy([this] { m_configuration.load("/dev/zero"); }));
    const std::string begin = "[General]\nKey=";
    const std::string largest = begin + std::string(16777216 - begin.size(), 'x');
    m_configuration.load(m_folder.write("a.ini", largest));
    EXPECT_EQ(16777216 - begin.size(), value().size());
    EXPECT_EQ(m_folder.file("a.ini") + ": more than 16777216 bytes",
              thrownBy([&] { m_configuration.load(m_folder.write("a.ini", largest + "x")); }));
}

TEST_F(HostConfigurationTest, ReportsAnUnreadableFile)
{
    EXPECT_EQ(m_folder.path() + ": cannot read file", thrownBy([this] { m_configuration.load(m_folder.path()); }));
}

TEST_F(HostConfigurationTest, LogsEachTimeThatTheFirstReadFailed)
{
    const std::string path = m_folder.file("late.ini");
    const SetVariable variable(kVariable, path.c_str());
    EXPECT_EQ(path + ": cannot open file", thrownBy([this] { value(); }));
    m_folder.write("late.ini", "[General]\nKey=late\n");
    EXPECT_EQ(path + ": cannot open file", thrownBy([this] { value(); }));
    m_configuration.reload();
    EXPECT_EQ("late", value());
}

TEST_F(HostConfigurationTest, KeepsOldValuesValidForThoseWhoHoldThem)
{
    m_configuration.load(m_folder.write("a.ini", "[General]\nKey=old\n"));
    const std::shared_ptr<const IniFile> held = m_configuration.values();
    m_configuration.load(m_folder.write("b.ini", "[General]\nKey=new\n"));
    EXPECT_EQ("old", held->find("General", "Key"));
    EXPECT_EQ("new", value());
}

// Both keys change together in the file: a reader that sees them differ has seen half a reload.
TEST_F(HostConfigurationTest, IsNeverSeenHalfRead)
{
    const std::string even = m_folder.write("even.ini", "[General]\nKey=even\nOther=even\n");
    const std::string odd = m_folder.write("odd.ini", "[General]\nKey=odd\nOther=odd\n");
    m_configuration.load(even);
    std::atomic<bool> over{false};
    std::atomic<int> torn{0};
    std::atomic<int> asked{0};
    std::vector<std::thread> readers;
    readers.reserve(8);
    for (int i = 0; i < 8; ++i) {
        readers.emplace_back([&] {
            while (!over) {
                const std::shared_ptr<const IniFile> values = m_configuration.values();
                torn += values->find("General", "Key") == values->find("General", "Other") ? 0 : 1;
                ++asked;
            }
        });
    }
    for (int i = 0; i < 200 || asked < 1000; ++i) {
        m_configuration.load(i % 2 == 0 ? odd : even);
        m_configuration.reload();
    }
    over = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(0, torn);
}

TEST_F(HostConfigurationTest, ReadsOnceForManyThreadsAtFirstUse)
{
    const std::string path = m_folder.write("a.ini", "[General]\nKey=a\n");
    const SetVariable variable(kVariable, path.c_str());
    std::vector<std::shared_ptr<const IniFile>> seen(16);
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    for (auto& values : seen) {
        threads.emplace_back([this, &values] { values = m_configuration.values(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& values : seen) {
        EXPECT_EQ(seen.front(), values);
    }
}

} // namespace
