#include "PrivateSystem.h"

#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <future>

namespace {

int ownMounts() { return open("/proc/thread-self/ns/mnt", O_RDONLY | O_CLOEXEC); }

// On a separate thread, because it changes what the thread sees. The machine is simulated too: nobody's real
// users are touched.
TEST(PrivateSystem, KeepsItsUsersWhileTheMachineReplacesItsOwn)
{
    const TemporaryFolder folder;
    for (const char* const name : {"machine", "served", "packages"}) {
        std::filesystem::create_directory(folder.file(name));
    }
    folder.write("machine/passwd", "the machine's users");
    const auto usersAfterwards = [&folder]() -> std::string {
        EXPECT_EQ(0, unshare(CLONE_NEWNS)) << "run this as root";
        EXPECT_EQ(0, mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr));
        EXPECT_EQ(0, mount(folder.file("machine").c_str(), "/etc", nullptr, MS_BIND, nullptr));
        EXPECT_EQ("the machine's users", contentOf("/etc/passwd"));
        const int machine = ownMounts();
        PrivateSystem(folder.path(), folder.file("served"), folder.file("packages")).enter();
        const int system = ownMounts();
        EXPECT_EQ(contentOf(folder.file("etc/passwd")), contentOf("/etc/passwd"));

        EXPECT_EQ(0, setns(machine, CLONE_NEWNS));
        // setns leaves a changed root (chroot): what is written then would be the real machine's.
        if (contentOf("/etc/passwd") != "the machine's users") {
            return std::string("this is not the simulated machine");
        }
        writeFile("/etc/passwd.new", "the machine's new users");
        std::filesystem::rename("/etc/passwd.new", "/etc/passwd");
        EXPECT_EQ(0, setns(system, CLONE_NEWNS));
        close(machine);
        close(system);
        return contentOf("/etc/passwd");
    };
    EXPECT_EQ(contentOf(folder.file("etc/passwd")), std::async(std::launch::async, usersAfterwards).get());
    EXPECT_EQ("the machine's new users", contentOf(folder.file("machine/passwd")));
}

} // namespace
