#include "support/Process.h"

#include "support/Lines.h"
#include "support/LoopbackPort.h"
#include "support/SetVariable.h"
#include "support/TemporaryFolder.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace {

ProgramResult shell(const std::string& line, const Variables& environment = {})
{
    ProcessSetup setup;
    setup.words = {"sh", "-c", line};
    setup.environment = environment;
    return runProgram(setup);
}

TEST(RunProgram, CapturesOutputAndExitStatus)
{
    const ProgramResult result = shell("echo said; echo complained >&2; exit 7");
    EXPECT_EQ(7, result.status);
    EXPECT_EQ("said\n", result.out);
    EXPECT_EQ("complained\n", result.err);
    EXPECT_EQ(-SIGKILL, shell("kill -KILL $$").status);
    EXPECT_TRUE(exited(7, result));
    EXPECT_STREQ("status 7, not 0; it said:\nsaid\ncomplained\n", exited(0, result).message());
    EXPECT_THROW(runProgram({{"/nowhere/program"}}), std::runtime_error);
}

TEST(RunProgram, DropsTheUsersSettings)
{
    const SetVariable user("SFTPCLIENT_USER", "somebody");
    EXPECT_EQ("/nowhere\n", shell("echo $HOME $SFTPCLIENT_USER").out);
    EXPECT_EQ("me\n", shell("echo $SFTPCLIENT_USER", {{"SFTPCLIENT_USER", "me"}}).out);
}

TEST(Process, HasDefaultSignalsExceptTheIgnoredOne)
{
    const auto before = std::signal(SIGHUP, SIG_IGN);
    EXPECT_EQ(-SIGHUP, shell("kill -HUP $$").status);
    static_cast<void>(std::signal(SIGHUP, before));
    ProcessSetup setup;
    setup.words = {"sh", "-c", "kill -HUP $$"};
    setup.ignored = SIGHUP;
    EXPECT_EQ(0, runProgram(setup).status);
    EXPECT_EQ(before, std::signal(SIGHUP, before));
}

TEST(SetVariable, RestoresTheFormerValue)
{
    const SetVariable outer("SUPPORT_TEST", "outer");
    {
        const SetVariable inner("SUPPORT_TEST", nullptr);
        EXPECT_EQ(nullptr, std::getenv("SUPPORT_TEST"));
    }
    EXPECT_STREQ("outer", std::getenv("SUPPORT_TEST"));
}

TEST(LoopbackPort, IsReachedOnceItListens)
{
    const LoopbackPort port;
    // bash opens a connection for this name.
    const ProcessSetup connect = {{"bash", "-c", ": < /dev/tcp/127.0.0.1/" + std::to_string(port.number())}};
    EXPECT_TRUE(exited(1, runProgram(connect)));
    port.listen();
    EXPECT_FALSE(port.wasReached());
    EXPECT_TRUE(exited(0, runProgram(connect)));
    EXPECT_TRUE(port.wasReached());
}

// A shell command in place of a test program, in two processes.
ProcessSetup shards(const std::string& line)
{
    ProcessSetup setup;
    setup.words = {SHARDS, "2", "bash", "-c", "echo \"said by $GTEST_SHARD_INDEX\"; " + line};
    return setup;
}

constexpr char kRan[] = "echo '[==========] 3 tests from 1 test suite ran. (0 ms total)'; ";

TEST(Shards, CountTheCases)
{
    const ProgramResult all = runProgram(shards(kRan));
    EXPECT_TRUE(exited(0, all));
    EXPECT_TRUE(sameText("6 cases in 2 processes\n", all.out));
    EXPECT_TRUE(exited(1, runProgram(shards("true"))));
}

TEST(Shards, ShowTheOutputOfAProcessThatFailsOrCrashes)
{
    const ProgramResult failed = runProgram(shards(std::string(kRan) + "exit $GTEST_SHARD_INDEX"));
    EXPECT_TRUE(exited(1, failed));
    EXPECT_TRUE(sameText("said by 1\n[==========] 3 tests from 1 test suite ran. (0 ms total)\n"
                         "process 2 of 2: status 1\n6 cases in 2 processes\n",
                         failed.out));
    const ProgramResult crashed = runProgram(shards("((GTEST_SHARD_INDEX)) && kill -SEGV $$; " + std::string(kRan)));
    EXPECT_TRUE(exited(1, crashed));
    EXPECT_TRUE(sameText("said by 1\nprocess 2 of 2: status 139, SIGSEGV\n3 cases in 2 processes\n", crashed.out));
}

TEST(Shards, ShowTheOutputOfAProcessThatHangs)
{
    ProcessSetup setup = shards("sleep 600");
    setup.environment = {{"SHARDS_SECONDS", "0.01"}};
    const ProgramResult hung = runProgram(setup);
    EXPECT_TRUE(exited(1, hung));
    EXPECT_TRUE(holds("process 1 of 2: status 137, SIGKILL\n", hung.out));
}

TEST(Shards, ShowTheOutputWhenTheyAreTerminated)
{
    const TemporaryFolder folder;
    const TextFile out;
    ASSERT_EQ(0, mkfifo(folder.file("0").c_str(), 0600));
    ASSERT_EQ(0, mkfifo(folder.file("1").c_str(), 0600));
    ProcessSetup setup = shards("echo ready > " + folder.file("$GTEST_SHARD_INDEX") + "; sleep 600");
    setup.out = out.path();
    Process process(setup);
    EXPECT_EQ("ready\nready\n", contentOf(folder.file("0")) + contentOf(folder.file("1")));
    process.signal(SIGTERM);
    EXPECT_EQ(1, process.wait());
    EXPECT_TRUE(sameText("said by 0\nprocess 1 of 2: status 143, SIGTERM\n"
                         "said by 1\nprocess 2 of 2: status 143, SIGTERM\n0 cases in 2 processes\n",
                         contentOf(out.path())));
}

} // namespace
