#include "support/Lines.h"

#include <Transcript.h>

#include <gtest/gtest.h>

namespace {

using testserver::commandLine;
using testserver::replyLines;

TEST(CommandLine, IsRecordedAsReceived) { EXPECT_EQ("> rename a b", commandLine("rename a b")); }

TEST(CommandLine, PasswordsAreHidden)
{
    EXPECT_EQ("> PASS ****", commandLine("PASS secret"));
    EXPECT_EQ("> pass ****", commandLine("pass sec ret"));
    EXPECT_EQ("> PASS ****", commandLine("PASS"));
    EXPECT_EQ("> PASS ****", commandLine("PASS\tsecret"));
}

TEST(CommandLine, OtherCommandsAreNotHidden) { EXPECT_EQ("> PASSIVE x", commandLine("PASSIVE x")); }

TEST(CommandLine, ControlBytesAreEscaped)
{
    EXPECT_EQ("> SIZE \\x00\\x1b\\x7f \xc3\xa4", commandLine(std::string("SIZE \0\x1b\x7f \xc3\xa4", 11)));
}

TEST(ReplyLines, OneReply) { EXPECT_TRUE(sameLines(Lines{"< 250 removed"}, replyLines("250 removed\r\n"))); }

TEST(ReplyLines, ALineForEachLine)
{
    EXPECT_TRUE(sameLines(Lines({"< 211-features", "<  SIZE", "< 211 end"}),
                          replyLines("211-features\r\n SIZE\r\n211 end\r\n")));
}

TEST(ReplyLines, WithoutALineEnd) { EXPECT_TRUE(sameLines(Lines({"< 220-a", "< 22"}), replyLines("220-a\r\n22"))); }

TEST(ReplyLines, AnEmptyTextIsOneLine) { EXPECT_TRUE(sameLines(Lines{"< "}, replyLines(""))); }

TEST(ReplyLines, ControlBytesAreEscaped)
{
    EXPECT_TRUE(sameLines(Lines{"< 2\\x0d2\\x000"}, replyLines(std::string("2\r2\0000\n", 6))));
}

} // namespace
