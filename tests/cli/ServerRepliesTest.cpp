#include <base/ServerReplies.h>

#include <gtest/gtest.h>

namespace {

std::string told(const Reply& reply) { return std::to_string(reply.code) + "|" + reply.text + "|" + reply.command; }

} // namespace

TEST(ServerReplies, AreToldWithTheirCommands)
{
    ServerReplies replies;
    EXPECT_EQ("0||", told(replies.last()));
    replies.received("220 ready\r\n");
    EXPECT_EQ("220|ready|", told(replies.last()));
    replies.sent("USER me\r\n");
    EXPECT_EQ("220|ready|", told(replies.last()));
    replies.received("331 password please\r\n");
    EXPECT_EQ("331|password please|USER", told(replies.last()));
    replies.sent("PWD\r\n");
    replies.received("257 \"/\"\r\n");
    EXPECT_EQ("257|\"/\"|PWD", told(replies.last()));
}

TEST(ServerReplies, MayHaveManyLines)
{
    ServerReplies replies;
    replies.sent("STOR x\r\n");
    replies.received("552-Sorry,\r\n");
    replies.received(" 552 of them\r\n552-\r\nno more\r\n");
    EXPECT_EQ("0||", told(replies.last()));
    replies.received("552 \r\n");
    EXPECT_EQ("552|Sorry, 552 of them no more|STOR", told(replies.last()));
}

TEST(ServerReplies, AnnounceAnother)
{
    ServerReplies replies;
    replies.sent("RETR x\r\n");
    replies.received("150 here it comes\r\n");
    EXPECT_EQ("150|here it comes|RETR", told(replies.last()));
    replies.received("426 broken\r\n");
    EXPECT_EQ("426|broken|RETR", told(replies.last()));
}

TEST(ServerReplies, AnswerTheirCommandsInOrder)
{
    ServerReplies replies;
    replies.sent("STOR x\r\n");
    replies.sent("PASV\r\n");
    replies.received("550 not here\r\n");
    EXPECT_EQ("550|not here|STOR", told(replies.last()));
    replies.received("227 (1,2,3,4,5,6)\r\n");
    EXPECT_EQ("227|(1,2,3,4,5,6)|PASV", told(replies.last()));
}

TEST(ServerReplies, EndAsLibcurlSeesIt)
{
    ServerReplies replies;
    replies.received("no reply\r\n22 x\r\n2200 x\r\n220\r\n220\tx\r\n");
    EXPECT_EQ("0||", told(replies.last()));
    replies.received("220 at last");
    EXPECT_EQ("220|no reply 22 x 2200 x 220 220\tx at last|", told(replies.last()));
}

TEST(ServerReplies, AreCutWhereTheyAreVeryLong)
{
    ServerReplies replies;
    replies.received("220-" + std::string(900, 'a') + "\r\n220 " + std::string(900, 'b') + "\r\n");
    EXPECT_EQ(std::string(900, 'a') + " " + std::string(99, 'b'), replies.last().text);
}
