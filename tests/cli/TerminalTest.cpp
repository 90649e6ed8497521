#include "harness/Served.h"
#include "harness/TerminalCommand.h"

namespace {

class Terminal : public Served
{
protected:
    TerminalCommand start(const std::vector<std::string>& form)
    {
        return TerminalCommand(withCa(form), environment(), local(""));
    }
};

constexpr char kClear[] = "\r\x1b[K";

} // namespace

TEST_F(Terminal, ShowsProgressAndRemovesIt)
{
    writeFile(served("file"), std::string(2000, 'x'));
    writeFile(local("sent"), std::string(2000, 'x'));
    serve();
    for (const std::vector<std::string>& form :
         std::vector<std::vector<std::string>>{{"get", url("/file")}, {"put", "sent", url()}}) {
        TerminalCommand command = start(form);
        EXPECT_EQ(command.wait(), 0);
        EXPECT_NE(command.shown().find(kClear + std::string("2.0 KiB of 2.0 KiB, 100 %")), std::string::npos)
            << command.shown();
        const std::string::size_type last = command.shown().rfind(kClear);
        EXPECT_EQ(command.shown().find(" of ", last), std::string::npos) << command.shown();
    }
}

TEST_F(Terminal, ShowsNoProgressWhenToldSo)
{
    writeFile(served("file"), std::string(2000, 'x'));
    serve();
    TerminalCommand command = start({"get", url("/file"), "--quiet"});
    EXPECT_EQ(command.wait(), 0);
    EXPECT_EQ(command.shown(), "get: 0 No error\r\n");
}

TEST_F(Terminal, EscapesNames)
{
    writeFile(served("two\x1b[2J"), "");
    serve();
    TerminalCommand command = start({"ls", url(), "--quiet"});
    EXPECT_EQ(command.wait(), 0);
    EXPECT_EQ(command.shown(), "two\\x1b[2J\r\nls: 0 No error\r\n");
}

TEST_F(Terminal, AsksForThePassword)
{
    serve();
    TerminalCommand command(withCa({"test", url(), "--quiet"}), trust(), local(""));
    command.shownUpTo("Password of backup: ");
    command.type(config.password + "\n");
    EXPECT_EQ(command.wait(), 0);
    EXPECT_EQ(command.shown(), "Password of backup: \r\ntest: 0 No error\r\n");
}

TEST_F(Served, ShowsNoProgressToAFile)
{
    writeFile(served("file"), std::string(2000, 'x'));
    serve();
    EXPECT_EQ(run({"get", url("/file")}).err.find('\r'), std::string::npos);
}
