#include <base/ServerReplies.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// What is sent (">") or received ("<"), and "CODE|TEXT|COMMAND" of the last reply after that.
struct Step
{
    std::string said;
    std::string told;
};

void expectTold(const std::vector<Step>& steps)
{
    ServerReplies replies;
    for (const Step& step : steps) {
        SCOPED_TRACE(testing::PrintToString(step.said));
        const std::string text = step.said.substr(1);
        step.said.front() == '>' ? replies.sent(text) : replies.received(text);
        const Reply& last = replies.last();
        EXPECT_EQ(step.told, std::to_string(last.code) + "|" + last.text + "|" + last.command);
    }
}

} // namespace

TEST(ServerReplies, AreReportedWithTheirCommands)
{
    expectTold({{"<220 ready\r\n", "220|ready|"},
                {">USER me\r\n", "220|ready|"},
                {"<331 password please\r\n", "331|password please|USER"},
                {">PWD\r\n", "331|password please|USER"},
                {"<257 \"/\"\r\n", "257|\"/\"|PWD"}});
}

TEST(ServerReplies, CanHaveManyLines)
{
    expectTold({{">STOR x\r\n", "0||"},
                {"<552-Sorry,\r\n", "0||"},
                {"< 552 of them\r\n552-\r\nno more\r\n", "0||"},
                {"<552 \r\n", "552|Sorry, 552 of them no more|STOR"}});
}

TEST(ServerReplies, CanBePreliminary)
{
    expectTold({{">RETR x\r\n", "0||"},
                {"<150 here it comes\r\n", "150|here it comes|RETR"},
                {"<426 broken\r\n", "426|broken|RETR"}});
}

TEST(ServerReplies, MatchTheirCommandsInOrder)
{
    expectTold({{">STOR x\r\n", "0||"},
                {">PASV\r\n", "0||"},
                {"<550 not here\r\n", "550|not here|STOR"},
                {"<227 (1,2,3,4,5,6)\r\n", "227|(1,2,3,4,5,6)|PASV"}});
}

TEST(ServerReplies, EndWhereLibcurlEndsThem)
{
    expectTold({{"<no reply\r\n22 x\r\n2200 x\r\n220\r\n220\tx\r\n", "0||"},
                {"<220 at last", "220|no reply 22 x 2200 x 220 220\tx at last|"}});
}

TEST(ServerReplies, AreTruncatedIfVeryLong)
{
    ServerReplies replies;
    replies.received("220-" + std::string(900, 'a') + "\r\n220 " + std::string(900, 'b') + "\r\n");
    EXPECT_EQ(std::string(900, 'a') + " " + std::string(99, 'b'), replies.last().text);
}

TEST(ServerReplies, AreNotTheProxys)
{
    expectTold({{">CONNECT host:21 HTTP/1.1\r\nHost: host:21\r\n\r\n", "0||"},
                {"<HTTP/1.1 200 OK\r\n", "0||"},
                {"<213 5\r\n", "0||"},
                {"<\r\n", "0||"},
                {"<220 ready\r\n", "220|ready|"},
                {">EPSV\r\n", "220|ready|"},
                {"<229 here\r\n", "229|here|EPSV"},
                {">CONNECT host:99 HTTP/1.1\r\n\r\n", "229|here|EPSV"},
                {"<HTTP/1.1 502 no\r\n", "229|here|EPSV"},
                {">PASV\r\n", "229|here|EPSV"},
                {"<227 here\r\n", "227|here|PASV"}});
}
