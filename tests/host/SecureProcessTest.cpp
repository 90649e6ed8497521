#include "harness/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
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

std::string outputOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
    std::array<char, 200> text = {};
    return std::fgets(text.data(), text.size(), output.get()) == nullptr ? "" : text.data();
}

} // namespace

// A user must not choose the configuration of a program that has more rights than the user.
TEST(SecureProcess, DoesNotObeyTheVariable)
{
    const TemporaryFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const std::string program = folder.file("program");
    const std::string configuration = folder.write("a.ini", "[General]\nKey=obeyed\n");
    const std::string command = "SFTPCLIENT_CONFIG=" + configuration + " " + program;
    std::filesystem::copy_file(SECURE_HOST, program);
    EXPECT_EQ(outputOf(command), "ordinary process, obeyed\n");
    ASSERT_EQ(chown(program.c_str(), static_cast<uid_t>(-1), anotherGroup()), 0);
    ASSERT_EQ(chmod(program.c_str(), 02755), 0);
    EXPECT_EQ(outputOf(command), "secure process, not obeyed\n");
}
