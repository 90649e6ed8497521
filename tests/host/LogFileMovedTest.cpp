// A log that others rename, remove, replace or copy while it is written.
#include "harness/LogFolder.h"
#include "support/OtherUser.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

namespace {

using LogFileMoved = LogFolder;

TEST_F(LogFileMoved, IsRecreatedAfterRemoval)
{
    const std::string folder = m_folder.file("sub");
    LogFile file(folder + "/a.log", 1000, 2);
    file.write("one\n");
    std::filesystem::remove(folder + "/a.log");
    file.write("two\n");
    EXPECT_EQ("two\n", contentOf(folder + "/a.log"));
    std::filesystem::remove_all(folder);
    file.write("three\n");
    EXPECT_EQ("three\n", contentOf(folder + "/a.log"));
}

TEST_F(LogFileMoved, IsRefusedIfAFifoHasReplacedIt)
{
    LogFile file(m_path, 1000, 2);
    file.write("one\n");
    std::filesystem::rename(m_path, m_folder.file("old.log"));
    ASSERT_EQ(0, mkfifo(m_path.c_str(), 0600));
    const std::string refusal = m_path + " is not a regular file. Remove it, or name another file";
    EXPECT_EQ(refusal, failureOf(file, "two\n"));
    const int reader = open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(refusal, failureOf(file, "three\n"));
    EXPECT_EQ(refusal, failureOf(file, "three\n"));
    close(reader);
    std::filesystem::remove(m_path);
    EXPECT_EQ(kNothingThrown, failureOf(file, "four\n"));
    EXPECT_EQ("four\n", content());
    EXPECT_EQ("one\n", content("old.log"));
}

TEST_F(LogFileMoved, IsRecreatedAfterARename)
{
    LogFile file(m_path, 1000, 2);
    file.write("one\n");
    std::filesystem::rename(m_path, m_folder.file("old.log"));
    file.write("two\n");
    EXPECT_EQ("one\n", content("old.log"));
    EXPECT_EQ("two\n", content());
}

TEST_F(LogFileMoved, ContinuesInTheFileThatReplacedIt)
{
    LogFile file(m_path, 12, 2);
    file.write("one\n");
    std::filesystem::rename(m_path, m_folder.file("old.log"));
    m_folder.write("a.log", "new\n");
    file.write("two\n");
    file.write("3rd\n");
    EXPECT_EQ("one\n", content("old.log"));
    EXPECT_EQ("new\ntwo\n3rd\n", content());
    file.write("4th\n");
    EXPECT_EQ("4th\n", content());
}

TEST_F(LogFileMoved, ContinuesFromTheStartAfterItWasCopiedAndTruncated)
{
    LogFile file(m_path, 8, 3);
    file.write("1st\n");
    file.write("2nd\n");
    std::filesystem::copy_file(m_path, m_folder.file("copy"));
    std::filesystem::resize_file(m_path, 0);
    file.write("3rd\n");
    file.write("4th\n");
    EXPECT_EQ("1st\n2nd\n", content("copy"));
    EXPECT_EQ("3rd\n4th\n", content());
    EXPECT_EQ((std::set<std::string>{"a.log", "copy"}), namesIn(m_folder.path()));
}

TEST_F(LogFileMoved, ContinuesInAFolderThatIsNoLongerSearchable)
{
    std::unique_ptr<LogFile> file;
    {
        const OtherUser user;
        file = std::make_unique<LogFile>(m_path, 1000, 2);
    }
    setFolderMode(0);
    {
        const OtherUser user;
        EXPECT_EQ(kNothingThrown, failureOf(*file, "one\n"));
    }
    setFolderMode(0777);
    EXPECT_EQ("one\n", content());
}

TEST_F(LogFileMoved, KeepsAFileOpenThatItCannotReopen)
{
    const OtherUser user;
    LogFile file(m_path, 1000, 2);
    ASSERT_EQ(0, chmod(m_path.c_str(), 0400));
    EXPECT_EQ(kNothingThrown, failureOf(file, "one\n"));
    EXPECT_EQ("one\n", content());
}

TEST_F(LogFileMoved, WaitsForAFolderThatIsGoneDuringARotation)
{
    const std::string folder = m_folder.file("sub");
    LogFile file(folder + "/a.log", 10, 2);
    file.write("1st\n");
    std::filesystem::rename(folder, m_folder.file("moved"));
    m_folder.write("sub", "a file in the folder's place");
    EXPECT_NE(kNothingThrown, failureOf(file, "a long line\n"));
    EXPECT_NE(kNothingThrown, failureOf(file, "2nd\n"));
    EXPECT_NE(kNothingThrown, failureOf(file, "3rd\n"));
    std::filesystem::remove(folder);
    EXPECT_EQ(kNothingThrown, failureOf(file, "4th\n"));
    EXPECT_EQ("4th\n", contentOf(folder + "/a.log"));
}

} // namespace
