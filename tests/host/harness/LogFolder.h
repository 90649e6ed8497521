#ifndef HOST_HARNESS_LOGFOLDER_H
#define HOST_HARNESS_LOGFOLDER_H

#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <LogFile.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>

inline std::set<std::string> namesIn(const std::string& folder)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename());
    }
    return names;
}

inline std::string failureOf(LogFile& file, const std::string& line)
{
    return thrownBy([&] { file.write(line); });
}

/// A folder with a log, `m_path`.
class LogFolder : public testing::Test
{
protected:
    LogFolder() { setFolderMode(0777); }
    ~LogFolder() override { setFolderMode(0777); }

    void setFolderMode(mode_t mode) const { EXPECT_EQ(0, chmod(m_folder.path().c_str(), mode)); }

    std::string content(const std::string& name = "a.log") const { return contentOf(m_folder.file(name)); }

    mode_t modeOf(const std::string& name) const
    {
        struct stat status = {};
        EXPECT_EQ(0, stat(m_folder.file(name).c_str(), &status)) << name;
        return status.st_mode & 07777U;
    }

    TemporaryFolder m_folder;
    std::string m_path = m_folder.file("a.log");
};

#endif
