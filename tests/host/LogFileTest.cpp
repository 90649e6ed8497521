#include "harness/FileSizeLimit.h"
#include "harness/TemporaryFolder.h"
#include "harness/WithoutRoot.h"

#include <LogFile.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <exception>
#include <filesystem>
#include <memory>
#include <set>
#include <system_error>

namespace {

std::set<std::string> namesIn(const std::string& folder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename());
    }
    return names;
}

std::string failureOf(LogFile& file, const std::string& line)
{
    try {
        file.write(line);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "no failure";
}

class LogFileTest : public testing::Test
{
protected:
    LogFileTest() { setFolderMode(0777); }
    ~LogFileTest() override { setFolderMode(0777); }

    void setFolderMode(mode_t mode) const { EXPECT_EQ(chmod(m_folder.path().c_str(), mode), 0); }

    std::string content(const std::string& name = "a.log") const { return contentOf(m_folder.file(name)); }

    TemporaryFolder m_folder;
    std::string m_path = m_folder.file("a.log");
};

TEST_F(LogFileTest, AddsToWhatIsThere)
{
    m_folder.write("a.log", "old\n");
    LogFile(m_path, 1000, 2).write("one\n");
    LogFile(m_path, 1000, 2).write("two\n");
    EXPECT_EQ(content(), "old\none\ntwo\n");
}

TEST_F(LogFileTest, WritesEachLineAtOnce)
{
    LogFile file(m_path, 1000, 2);
    file.write("one\n");
    EXPECT_EQ(content(), "one\n");
    file.write(std::string(900, 'x') + "\n");
    EXPECT_EQ(content().size(), 905U);
}

TEST_F(LogFileTest, GivesWayBeforeItBecomesTooLarge)
{
    LogFile file(m_path, 8, 3);
    for (const char* const line : {"1st\n", "2nd\n", "3rd\n", "4th\n", "5th\n", "6th\n", "7th\n"}) {
        file.write(line);
    }
    EXPECT_EQ(namesIn(m_folder.path()), (std::set<std::string>{"a.log", "a.1.log", "a.2.log"}));
    EXPECT_EQ(content(), "7th\n");
    EXPECT_EQ(content("a.1.log"), "5th\n6th\n");
    EXPECT_EQ(content("a.2.log"), "3rd\n4th\n");
}

TEST_F(LogFileTest, CanBeOneFileAlone)
{
    LogFile file(m_path, 8, 1);
    for (const char* const line : {"1st\n", "2nd\n", "3rd\n"}) {
        file.write(line);
    }
    EXPECT_EQ(namesIn(m_folder.path()), std::set<std::string>{"a.log"});
    EXPECT_EQ(content(), "3rd\n");
}

TEST_F(LogFileTest, TakesALineThatIsTooLargeAlone)
{
    LogFile file(m_path, 8, 3);
    file.write("1st\n");
    file.write("much too large\n");
    file.write("3rd\n");
    EXPECT_EQ(content(), "3rd\n");
    EXPECT_EQ(content("a.1.log"), "much too large\n");
    EXPECT_EQ(content("a.2.log"), "1st\n");
}

TEST_F(LogFileTest, MakesItsFolder)
{
    LogFile(m_folder.file("new/folder/a.log"), 1000, 2).write("one\n");
    EXPECT_EQ(content("new/folder/a.log"), "one\n");
}

TEST_F(LogFileTest, StaysInItsFolderWhenTheProcessGoesElsewhere)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.path());
    LogFile file("a.log", 4, 2);
    std::filesystem::current_path(before);
    file.write("1st\n");
    file.write("2nd\n");
    EXPECT_EQ(content(), "2nd\n");
    EXPECT_EQ(content("a.1.log"), "1st\n");
}

TEST_F(LogFileTest, IsNotHandedToPrograms)
{
    const LogFile file(m_path, 1000, 2);
    int found = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == m_path) {
            EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
            ++found;
        }
    }
    EXPECT_EQ(found, 1);
}

TEST_F(LogFileTest, ComesBackWhenItWasRemoved)
{
    const std::string folder = m_folder.file("sub");
    LogFile file(folder + "/a.log", 1000, 2);
    file.write("one\n");
    std::filesystem::remove(folder + "/a.log");
    file.write("two\n");
    EXPECT_EQ(contentOf(folder + "/a.log"), "two\n");
    std::filesystem::remove_all(folder);
    file.write("three\n");
    EXPECT_EQ(contentOf(folder + "/a.log"), "three\n");
}

TEST_F(LogFileTest, LeavesNothingOfALineThatDoesNotFitOnTheDisk)
{
    LogFile file(m_path, 1000, 2);
    file.write("the first line\n");
    {
        const FileSizeLimit full(20);
        EXPECT_EQ(failureOf(file, "the second line\n"), "Failed writing to file " + m_path + ": File too large");
        EXPECT_EQ(content(), "the first line\n");
        EXPECT_EQ(failureOf(file, "3rd\n"), "no failure");
    }
    file.write("the fourth line\n");
    EXPECT_EQ(content(), "the first line\n3rd\nthe fourth line\n");
}

TEST_F(LogFileTest, LeavesNothingOfALineThatDoesNotFitAfterARotation)
{
    LogFile file(m_path, 20, 2);
    file.write("the first line\n");
    {
        const FileSizeLimit full(15);
        EXPECT_NE(failureOf(file, "the second line\n"), "no failure");
    }
    EXPECT_EQ(content(), "");
    EXPECT_EQ(content("a.1.log"), "the first line\n");
    file.write("3rd\n");
    EXPECT_EQ(content(), "3rd\n");
}

TEST_F(LogFileTest, SaysThatADeviceIsFull)
{
    LogFile file("/dev/full", 1000, 2);
    EXPECT_EQ(failureOf(file, "one\n"), "Failed writing to file /dev/full: No space left on device");
    EXPECT_EQ(failureOf(file, "two\n"), "Failed writing to file /dev/full: No space left on device");
}

TEST_F(LogFileTest, IsRefusedInAReadOnlyFolder)
{
    setFolderMode(0555);
    const WithoutRoot withoutRoot;
    EXPECT_THROW(LogFile(m_path, 1000, 2), std::system_error);
    EXPECT_THROW(LogFile(m_folder.file("sub/a.log"), 1000, 2), std::system_error);
}

TEST_F(LogFileTest, GoesOnEmptyWhereItMayNotBeRenamed)
{
    std::unique_ptr<LogFile> file;
    {
        const WithoutRoot withoutRoot;
        file = std::make_unique<LogFile>(m_path, 8, 2);
        file->write("1st\n");
        file->write("2nd\n");
    }
    setFolderMode(0555);
    const WithoutRoot withoutRoot;
    EXPECT_EQ(failureOf(*file, "3rd\n"), "rotating_file_sink: failed renaming " + m_path + " to " +
                                             m_folder.file("a.1.log") + ": Permission denied");
    EXPECT_EQ(failureOf(*file, "4th\n"), "no failure");
    EXPECT_EQ(content(), "4th\n");
}

// spdlog closes the file before it rotates, and would go on with the closed one as soon as a line is short enough.
TEST_F(LogFileTest, WaitsForAFolderThatIsGoneDuringARotation)
{
    const std::string folder = m_folder.file("sub");
    LogFile file(folder + "/a.log", 10, 2);
    file.write("1st\n");
    std::filesystem::rename(folder, m_folder.file("moved"));
    m_folder.write("sub", "a file in the folder's place");
    EXPECT_NE(failureOf(file, "a long line\n"), "no failure");
    EXPECT_NE(failureOf(file, "2nd\n"), "no failure");
    EXPECT_NE(failureOf(file, "3rd\n"), "no failure");
    std::filesystem::remove(folder);
    EXPECT_EQ(failureOf(file, "4th\n"), "no failure");
    EXPECT_EQ(contentOf(folder + "/a.log"), "4th\n");
}

} // namespace
