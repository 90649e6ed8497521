#include "support/Lines.h"
#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <vector>

namespace {

// Root may give a file to any group, others only to their own groups.
gid_t anotherGroup()
{
    std::vector<gid_t> groups(static_cast<std::size_t>(getgroups(0, nullptr)));
    groups.resize(static_cast<std::size_t>(getgroups(static_cast<int>(groups.size()), groups.data())));
    if (geteuid() == 0) {
        constexpr gid_t kNoGroup = 65534;
        groups.push_back(kNoGroup);
    }
    for (const gid_t group : groups) {
        if (group != getgid()) {
            return group;
        }
    }
    throw std::runtime_error("This test makes a program set-group-ID: run it as root, or as a user of two groups.");
}

} // namespace

// A user must not choose the configuration of a program that has more rights than the user.
TEST(SecureProcess, IgnoresTheVariable)
{
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const std::string program = folder.file("program");
    const std::string configuration = folder.write("a.ini", "[General]\nKey=obeyed\n");
    const ProcessSetup setup = {{program}, {{"SFTPCLIENT_CONFIG", configuration}}};
    std::filesystem::copy_file(SECURE_HOST, program);
    EXPECT_TRUE(sameText("ordinary process, obeyed\n", runProgram(setup).out));
    ASSERT_EQ(0, chown(program.c_str(), static_cast<uid_t>(-1), anotherGroup()));
    ASSERT_EQ(0, chmod(program.c_str(), 02755));
    EXPECT_TRUE(sameText("secure process, not obeyed\n", runProgram(setup).out));
}
