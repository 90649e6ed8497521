#include "harness/LogFolder.h"
#include "support/FileSizeLimit.h"
#include "support/OtherUser.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <system_error>

namespace {

std::string refusalOf(const std::string& path)
{
    return thrownBy([&] { const LogFile file(path, 1000, 2); });
}

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// The umask as long as this object lives.
class Umask
{
public:
    explicit Umask(mode_t mask) : m_before(umask(mask)) {}
    ~Umask() { umask(m_before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t m_before;
};

volatile std::sig_atomic_t signalsThatArrived = 0;

using LogFileTest = LogFolder;

TEST_F(LogFileTest, AppendsToAnExistingFile)
{
    m_folder.write("a.log", "old\n");
    LogFile(m_path, 1000, 2).write("one\n");
    LogFile(m_path, 1000, 2).write("two\n");
    EXPECT_EQ("old\none\ntwo\n", content());
}

TEST_F(LogFileTest, WritesEachLineAtOnce)
{
    LogFile file(m_path, 1000, 2);
    file.write("one\n");
    EXPECT_EQ("one\n", content());
    file.write(std::string(900, 'x') + "\n");
    EXPECT_EQ(905U, content().size());
}

TEST_F(LogFileTest, RotatesBeforeItBecomesTooLarge)
{
    LogFile file(m_path, 8, 3);
    for (const char* const line : {"1st\n", "2nd\n", "3rd\n", "4th\n", "5th\n", "6th\n", "7th\n"}) {
        file.write(line);
    }
    EXPECT_EQ((std::set<std::string>{"a.log", "a.1.log", "a.2.log"}), namesIn(m_folder.path()));
    EXPECT_EQ("7th\n", content());
    EXPECT_EQ("5th\n6th\n", content("a.1.log"));
    EXPECT_EQ("3rd\n4th\n", content("a.2.log"));
}

TEST_F(LogFileTest, CanKeepOnlyOneFile)
{
    LogFile file(m_path, 8, 1);
    for (const char* const line : {"1st\n", "2nd\n", "3rd\n"}) {
        file.write(line);
    }
    EXPECT_EQ(std::set<std::string>{"a.log"}, namesIn(m_folder.path()));
    EXPECT_EQ("3rd\n", content());
}

TEST_F(LogFileTest, WritesAnOversizedLineToItsOwnFile)
{
    LogFile file(m_path, 8, 3);
    file.write("1st\n");
    file.write("much too large\n");
    file.write("3rd\n");
    EXPECT_EQ("3rd\n", content());
    EXPECT_EQ("much too large\n", content("a.1.log"));
    EXPECT_EQ("1st\n", content("a.2.log"));
}

TEST_F(LogFileTest, DoesNotRotateWhileEmpty)
{
    LogFile(m_path, 8, 3).write("much too large\n");
    EXPECT_EQ("much too large\n", content());
    EXPECT_EQ(std::set<std::string>{"a.log"}, namesIn(m_folder.path()));
}

TEST_F(LogFileTest, CreatesItsFolder)
{
    LogFile(m_folder.file("new/folder/a.log"), 1000, 2).write("one\n");
    EXPECT_EQ("one\n", content("new/folder/a.log"));
}

TEST_F(LogFileTest, StaysInItsFolderAfterAChangeOfDirectory)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.path());
    LogFile file("a.log", 4, 2);
    std::filesystem::current_path(before);
    file.write("1st\n");
    file.write("2nd\n");
    EXPECT_EQ("2nd\n", content());
    EXPECT_EQ("1st\n", content("a.1.log"));
}

TEST_F(LogFileTest, IsNotInheritedByPrograms)
{
    const LogFile file(m_path, 1000, 2);
    int found = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == m_path) {
            EXPECT_NE(0, fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
            ++found;
        }
    }
    EXPECT_EQ(1, found);
}

TEST_F(LogFileTest, LeavesNoPartOfALineThatDoesNotFitOnTheDisk)
{
    LogFile file(m_path, 1000, 2);
    file.write("the first line\n");
    {
        const FileSizeLimit full(20);
        EXPECT_EQ(m_path + ": File too large", failureOf(file, "the second line\n"));
        EXPECT_EQ("the first line\n", content());
        EXPECT_EQ(kNothingThrown, failureOf(file, "3rd\n"));
    }
    file.write("the fourth line\n");
    EXPECT_EQ("the first line\n3rd\nthe fourth line\n", content());
}

TEST_F(LogFileTest, LeavesNoPartOfALineThatDoesNotFitAfterARotation)
{
    LogFile file(m_path, 20, 2);
    file.write("the first line\n");
    {
        const FileSizeLimit full(15);
        EXPECT_NE(kNothingThrown, failureOf(file, "the second line\n"));
    }
    EXPECT_EQ("", content());
    EXPECT_EQ("the first line\n", content("a.1.log"));
    file.write("3rd\n");
    EXPECT_EQ("3rd\n", content());
}

TEST_F(LogFileTest, CannotBeReadByOthers)
{
    m_folder.write("old.log", "old\n");
    ASSERT_EQ(0, chmod(m_folder.file("old.log").c_str(), 0604));
    const Umask none(0);
    LogFile(m_path, 1000, 2).write("one\n");
    EXPECT_EQ(0640U, modeOf("a.log"));
    LogFile old(m_folder.file("old.log"), 4, 2);
    EXPECT_EQ(0604U, modeOf("old.log"));
    old.write("new\n");
    EXPECT_EQ(0604U, modeOf("old.1.log"));
    EXPECT_EQ(0640U, modeOf("old.log"));
}

TEST_F(LogFileTest, ObeysAStricterUmask)
{
    const Umask ownerOnly(0077);
    LogFile(m_path, 1000, 2).write("one\n");
    EXPECT_EQ(0600U, modeOf("a.log"));
}

TEST_F(LogFileTest, IsRefusedIfItIsNotARegularFile)
{
    ASSERT_EQ(0, mkfifo(m_path.c_str(), 0600));
    const std::string refusal = " is not a regular file. Remove it, or name another file";
    EXPECT_EQ(m_path + refusal, refusalOf(m_path));
    const int reader = open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(m_path + refusal, refusalOf(m_path));
    close(reader);
    EXPECT_EQ("/dev/full" + refusal, refusalOf("/dev/full"));
    EXPECT_EQ(m_folder.path() + ": Is a directory", refusalOf(m_folder.path()));
}

TEST_F(LogFileTest, CanHaveTheDescriptorOfStandardInput)
{
    const int standardInput = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 100);
    close(STDIN_FILENO);
    {
        LogFile file(m_path, 1000, 2);
        EXPECT_EQ(m_path, std::filesystem::read_symlink("/proc/self/fd/0"));
        file.write("one\n");
        EXPECT_EQ("one\n", content());
    }
    EXPECT_EQ(-1, fcntl(STDIN_FILENO, F_GETFD));
    dup2(standardInput, STDIN_FILENO);
    close(standardInput);
}

// By default, the signal that comes with this failure ends the process.
TEST_F(LogFileTest, LetsNoSignalThroughWhenItMayNotGrow)
{
    LogFile file(m_path, 1000, 2);
    file.write("1st\n");
    {
        const FileSizeLimit limit(6);
        static_cast<void>(std::signal(SIGXFSZ, [](int) { signalsThatArrived = signalsThatArrived + 1; }));
        EXPECT_EQ(m_path + ": File too large", failureOf(file, "2nd\n"));
    }
    EXPECT_EQ(0, signalsThatArrived);
    EXPECT_EQ("1st\n", content());
}

// A file that the process opens next must not get the lines of a closed log, nor leak its descriptor.
TEST_F(LogFileTest, NeverHoldsMoreThanOneDescriptor)
{
    const std::size_t before = openDescriptors();
    {
        LogFile file(m_path, 8, 3);
        EXPECT_EQ(before + 1, openDescriptors());
        file.write("1st\n");
        file.write("too long\n");
        std::filesystem::remove(m_path);
        file.write("3rd\n");
        EXPECT_EQ(before + 1, openDescriptors());
        std::filesystem::remove(m_path);
        ASSERT_EQ(0, mkfifo(m_path.c_str(), 0600));
        EXPECT_NE(kNothingThrown, failureOf(file, "4th\n"));
    }
    EXPECT_EQ(before, openDescriptors());
    EXPECT_NE(kNothingThrown, refusalOf("/dev/full"));
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(LogFileTest, AppendsTheNumberToNamesWithoutAnExtension)
{
    for (const std::string name : {"log", ".hidden", "b.c.log"}) {
        LogFile file(m_folder.file(name), 4, 2);
        file.write("1st\n");
        file.write("2nd\n");
    }
    EXPECT_EQ((std::set<std::string>{"log", "log.1", ".hidden", ".hidden.1", "b.c.log", "b.c.1.log"}),
              namesIn(m_folder.path()));
}

TEST_F(LogFileTest, IsRefusedInAReadOnlyFolder)
{
    setFolderMode(0555);
    const OtherUser user;
    EXPECT_THROW(LogFile(m_path, 1000, 2), std::system_error);
    EXPECT_THROW(LogFile(m_folder.file("sub/a.log"), 1000, 2), std::system_error);
}

TEST_F(LogFileTest, IsTruncatedIfItCannotBeRenamed)
{
    std::unique_ptr<LogFile> file;
    {
        const OtherUser user;
        file = std::make_unique<LogFile>(m_path, 8, 2);
        file->write("1st\n");
        file->write("2nd\n");
    }
    setFolderMode(0555);
    const OtherUser user;
    EXPECT_EQ(m_path + " is emptied because " + m_path + " cannot be renamed to " + m_folder.file("a.1.log") +
                  ": Permission denied",
              failureOf(*file, "3rd\n"));
    EXPECT_EQ(kNothingThrown, failureOf(*file, "4th\n"));
    EXPECT_EQ("4th\n", content());
}

} // namespace
