#include "support/Thrown.h"

#include <Faults.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testserver::Fault;
using testserver::FaultPlan;
using testserver::Misbehaviour;
using testserver::parseFault;

TEST(ParseFault, ACommandAndAReply)
{
    const Fault fault = parseFault("SIZE=reply:550 no: such = file");
    EXPECT_EQ("SIZE", fault.command);
    EXPECT_EQ(Misbehaviour::Reply, fault.misbehaviour);
    EXPECT_EQ("550 no: such = file\r\n", fault.text);
    EXPECT_EQ(0U, fault.occurrence);
    EXPECT_EQ(0U, fault.session);
}

TEST(ParseFault, ASessionAndAnOccurrence)
{
    const Fault fault = parseFault("2/RETR#3=drop");
    EXPECT_EQ("RETR", fault.command);
    EXPECT_EQ(Misbehaviour::Drop, fault.misbehaviour);
    EXPECT_EQ(3U, fault.occurrence);
    EXPECT_EQ(2U, fault.session);
}

TEST(ParseFault, EscapesStandForBytes)
{
    EXPECT_EQ(std::string("a\r\nb\0c\xff\\d\r\n", 11), parseFault("PWD=reply:a\\r\\nb\\0c\\xFf\\\\d").text);
}

TEST(ParseFault, ATextCanEndWithoutALineEnd)
{
    EXPECT_EQ("220-half", parseFault("GREETING=reply:220-half\\c").text);
    EXPECT_EQ("", parseFault("GREETING=reply:\\c").text);
    EXPECT_EQ(std::string("a\0", 2), parseFault("GREETING=reply:a\\0\\c").text);
    EXPECT_EQ("\r\n", parseFault("GREETING=reply:").text);
}

TEST(ParseFault, NumbersAsLargeAsFiles)
{
    EXPECT_EQ(53687091200U, parseFault("DATA=drop-after:53687091200").number);
    EXPECT_EQ(0U, parseFault("DATA=claim-after:0").number);
}

TEST(ParseFault, EachMisbehaviourHasItsPlaces)
{
    struct Row
    {
        const char* text;
        Misbehaviour misbehaviour;
    };
    const Row rows[] = {
        {"PASS=last:5", Misbehaviour::Last},
        {"DONE=endless:5", Misbehaviour::Endless},
        {"PASS=drop", Misbehaviour::Drop},
        {"PASS=reset", Misbehaviour::Reset},
        {"PASS=stall", Misbehaviour::Stall},
        {"PASS=delay:5", Misbehaviour::Delay},
        {"PASS=split", Misbehaviour::Split},
        {"PASS=pad:5", Misbehaviour::Pad},
        {"PASS=meet:5", Misbehaviour::Meet},
        {"GREETING=stall", Misbehaviour::Stall},
        {"TLS=garbage", Misbehaviour::Garbage},
        {"TLS=close", Misbehaviour::Close},
        {"TLS=reset", Misbehaviour::Reset},
        {"TLS=stall", Misbehaviour::Stall},
        {"tls=plain", Misbehaviour::Plain},
        {"LISTEN=refuse", Misbehaviour::Refuse},
        {"DATA=reset-after:5", Misbehaviour::ResetAfter},
        {"DATA=stall-after:5", Misbehaviour::StallAfter},
        {"DATA=slow:5", Misbehaviour::Slow},
        {"DATA=plain", Misbehaviour::Plain},
        {"DATA=garbage", Misbehaviour::Garbage},
        {"DATA=close", Misbehaviour::Close},
        {"DATA=stall", Misbehaviour::Stall},
        {"DATA=no-close-notify", Misbehaviour::NoCloseNotify},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.misbehaviour, parseFault(row.text).misbehaviour) << row.text;
    }
}

TEST(ParseFault, InvalidFaultsAreRejectedWithTheReason)
{
    struct Row
    {
        const char* text;
        const char* reason;
    };
    const Row rows[] = {
        {"", "there is no ="},
        {"SIZE", "there is no ="},
        {"=drop", "there is no command"},
        {"1/#1=drop", "there is no command"},
        {"SIZE=explode", "\"explode\" is no misbehaviour"},
        {"SIZE=", "\"\" is no misbehaviour"},
        {"SIZE=drop:1", "it takes no argument"},
        {"SIZE=delay", "an argument is missing"},
        {"SIZE=delay:", "\"\" is no number"},
        {"SIZE=delay:-1", "\"-1\" is no number"},
        {"SIZE=delay:18446744073709551616", "\"18446744073709551616\" is too large"},
        {"SIZE#=drop", "\"\" is no number"},
        {"SIZE#y=drop", "\"y\" is no number"},
        {"x/SIZE=drop", "\"x\" is no number"},
        {"SIZE#99999999999=drop", "\"99999999999\" is too large"},
        {"SIZE=reply:a\\", "a \\ ends it"},
        {"SIZE=reply:\\q", "\\q stands for nothing"},
        {"SIZE=reply:\\c no", "\\c stands for nothing"},
        {"SIZE=reply:\\x1", "\\x needs two hexadecimal digits"},
        {"SIZE=garbage", "\"garbage\" means nothing for SIZE"},
        {"TLS=reply:x", "\"reply\" means nothing for TLS"},
        {"DATA=refuse", "\"refuse\" means nothing for DATA"},
        {"LISTEN=drop", "\"drop\" means nothing for LISTEN"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ("fault \"" + std::string(row.text) + "\": " + row.reason +
                      "; the form is [SESSION/]COMMAND[#OCCURRENCE]=MISBEHAVIOUR[:ARGUMENT]",
                  thrownBy<std::invalid_argument>([&] { parseFault(row.text); }));
    }
}

std::string textOf(const Fault* fault) { return fault == nullptr ? "none" : fault->text; }

TEST(FaultPlan, WithoutNumbersAFaultHappensEachTime)
{
    FaultPlan plan({parseFault("SIZE=reply:x\\c")}, 7);
    EXPECT_EQ("x", textOf(plan.next("SIZE")));
    EXPECT_EQ("none", textOf(plan.next("MDTM")));
    EXPECT_EQ("x", textOf(plan.next("size")));
}

TEST(FaultPlan, OnlyTheNthOccurrence)
{
    FaultPlan plan({parseFault("SIZE#2=reply:second\\c"), parseFault("SIZE#3=reply:third\\c")}, 1);
    EXPECT_EQ("none", textOf(plan.next("SIZE")));
    EXPECT_EQ("second", textOf(plan.next("SIZE")));
    EXPECT_EQ("third", textOf(plan.next("SIZE")));
    EXPECT_EQ("none", textOf(plan.next("SIZE")));
}

TEST(FaultPlan, OnlyTheNthSession)
{
    const std::vector<Fault> faults = {parseFault("2/SIZE=reply:x\\c")};
    EXPECT_EQ("none", textOf(FaultPlan(faults, 1).next("SIZE")));
    FaultPlan second(faults, 2);
    EXPECT_EQ("x", textOf(second.next("SIZE")));
}

TEST(FaultPlan, TheFirstMatchWins)
{
    FaultPlan plan({parseFault("SIZE#1=reply:a\\c"), parseFault("SIZE=reply:b\\c")}, 1);
    EXPECT_EQ("a", textOf(plan.next("SIZE")));
    EXPECT_EQ("b", textOf(plan.next("SIZE")));
}

} // namespace
