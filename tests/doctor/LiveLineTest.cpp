// What doctor shows on a terminal while it works.
#include "harness/Examined.h"
#include "harness/RunCommand.h"
#include "harness/TerminalCommand.h"

#include <csignal>
#include <filesystem>

namespace {

constexpr char kClear[] = "\r\x1b[K";

class LiveLine : public Examined
{
protected:
    TerminalCommand start(const Words& more = {})
    {
        serve();
        writeFile(local("ca.pem"), request.caCert);
        std::filesystem::create_directory(local("folder"));
        std::filesystem::create_directory(local("tmp"));
        Words words = {"doctor", url("/"), "--user", config.user, "--ca", local("ca.pem"), "--clear-login"};
        words.insert(words.end(), more.begin(), more.end());
        const Variables variables = {
            {"SFTPCLIENT_PASSWORD", config.password}, {"LD_PRELOAD", SFTPCLIENT_KEPT_LISTS}, {"TMPDIR", local("tmp")}};
        return TerminalCommand(commandSetup(words, variables, local("folder")));
    }

    bool nothingIsLeftHere() const
    {
        return std::filesystem::is_empty(local("folder")) && std::filesystem::is_empty(local("tmp"));
    }

    /// What is shown once the line has gone.
    static std::string after(const TerminalCommand& command)
    {
        const std::string& shown = command.shown();
        return shown.substr(shown.rfind(kClear) + sizeof kClear - 1);
    }
};

TEST_F(LiveLine, NamesEachProbeAndDisappears)
{
    TerminalCommand command = start({"--write"});
    EXPECT_EQ(0, command.wait());
    std::string line;
    for (const char* const probe : {"TLS", "TLS", "TLS", "login", "user name", "login without the library's TLS step",
                                    "session's round trip", "round trip"}) {
        line += kClear + ("\x1b[?7ldoctor: " + std::string(probe)) + " ...\x1b[?7h"; // never a second line
    }
    const std::string expected = line + kClear + url("/") + ":\r\n";
    EXPECT_TRUE(sameText(expected, command.shown().substr(0, expected.size())));
    EXPECT_FALSE(holds("doctor: ", after(command)));
    EXPECT_TRUE(nothingIsLeftHere());
}

TEST_F(LiveLine, GivesWayToWhatIsKnownOnCtrlC)
{
    misbehave("PASS=stall");
    TerminalCommand command = start();
    command.shownUpTo("doctor: login ...");
    command.type("\x03");
    EXPECT_EQ(-SIGINT, command.wait());
    const std::string report = after(command);
    EXPECT_TRUE(holds("220 ready\r\n", report)) << report;
    EXPECT_TRUE(holds("both, all:\r\n    the probe that logs in was interrupted\r\n", report)) << report;
    EXPECT_FALSE(holds("doctor: ", report));
    EXPECT_TRUE(nothingIsLeftHere());
}

TEST_F(LiveLine, LeavesNothingOnCtrlCDuringTheRoundTrip)
{
    misbehave("RETR=stall");
    TerminalCommand command = start({"--write"});
    command.shownUpTo("doctor: session's round trip ...");
    command.type("\x03");
    EXPECT_EQ(-SIGINT, command.wait());
    EXPECT_TRUE(holds("was interrupted\r\n", after(command))) << after(command);
    EXPECT_TRUE(nothingIsLeftHere());
    EXPECT_TRUE(std::filesystem::is_empty(served("")));
}

} // namespace
