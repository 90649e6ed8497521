#include "harness/Served.h"
#include "harness/TerminalCommand.h"

namespace {

class Terminal : public Served
{
protected:
    TerminalCommand start(const Words& form) { return TerminalCommand(setupOf(form)); }
};

constexpr char kClear[] = "\r\x1b[K";

} // namespace

TEST_F(Terminal, ShowsProgressAndRemovesIt)
{
    writeFile(served("file"), std::string(2000, 'x'));
    writeFile(local("sent"), std::string(2000, 'x'));
    serve();
    for (const Words& form : std::vector<Words>{{"get", url("/file")}, {"put", "sent", url()}}) {
        SCOPED_TRACE(form[0]);
        TerminalCommand command = start(form);
        EXPECT_EQ(0, command.wait());
        EXPECT_TRUE(holds(kClear + std::string("\x1b[?7l2.0 KiB of 2.0 KiB, 100 %"), command.shown()));
        const std::string::size_type last = command.shown().rfind(kClear);
        EXPECT_EQ(std::string::npos, command.shown().find(" of ", last)) << command.shown();
    }
}

TEST_F(Terminal, ShowsNoProgressOnRequest)
{
    writeFile(served("file"), std::string(2000, 'x'));
    serve();
    TerminalCommand command = start({"get", url("/file"), "--quiet"});
    EXPECT_EQ(0, command.wait());
    EXPECT_TRUE(sameText("get: 0 No error\r\n", command.shown()));
}

TEST_F(Terminal, EscapesNames)
{
    writeFile(served("two\x1b[2J"), "");
    serve();
    TerminalCommand command = start({"ls", url(), "--quiet"});
    EXPECT_EQ(0, command.wait());
    EXPECT_TRUE(sameText("two\\x1b[2J\r\nls: 0 No error\r\n", command.shown()));
}

TEST_F(Terminal, AsksForThePassword)
{
    serve();
    TerminalCommand command(commandSetup(withCa({"test", url(), "--quiet"}), trust(), local("")));
    command.shownUpTo("Password of backup: ");
    command.type(config.password + "\n");
    EXPECT_EQ(0, command.wait());
    EXPECT_TRUE(sameText("Password of backup: \r\ntest: 0 No error\r\n", command.shown()));
}

TEST_F(Served, ShowsNoProgressToAFile)
{
    writeFile(served("file"), std::string(2000, 'x'));
    serve();
    EXPECT_EQ(std::string::npos, run({"get", url("/file")}).err.find('\r'));
}
