#include "Faults.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testserver::Fault;
using testserver::FaultPlan;
using testserver::Misbehaviour;
using testserver::parseFault;

TEST(ParseFault, ACommandAndItsReply)
{
    const Fault fault = parseFault("SIZE=reply:550 no: such = file");
    EXPECT_EQ("SIZE", fault.command);
    EXPECT_EQ(Misbehaviour::Reply, fault.misbehaviour);
    EXPECT_EQ("550 no: such = file\r\n", fault.text);
    EXPECT_EQ(0U, fault.session);
    EXPECT_EQ(0U, fault.occurrence);
}

TEST(ParseFault, SessionAndOccurrence)
{
    const Fault fault = parseFault("2/DATA#3=drop-after:1000");
    EXPECT_EQ("DATA", fault.command);
    EXPECT_EQ(Misbehaviour::DropAfter, fault.misbehaviour);
    EXPECT_EQ(1000U, fault.number);
    EXPECT_EQ(2U, fault.session);
    EXPECT_EQ(3U, fault.occurrence);
}

TEST(ParseFault, EscapesStandForBytes)
{
    EXPECT_EQ("220-a\r\n220 b\r\n", parseFault(R"(GREETING=reply:220-a\r\n220 b)").text);
    EXPECT_EQ(std::string("a\0\\b\xff\r\n", 7), parseFault(R"(X=reply:a\x00\\b\xff)").text);
    EXPECT_EQ("220", parseFault(R"(X=reply:220\c)").text);
    EXPECT_EQ("\r\n", parseFault("X=reply:").text);
}

TEST(ParseFault, AnythingElseIsRefusedWithAReason)
{
    for (const char* text : {"", "SIZE", "=drop", "SIZE=", "SIZE=sulk", "SIZE=drop:1", "SIZE=delay",
                             "SIZE=delay:", "SIZE=delay:x", "SIZE=delay:-1", "x/SIZE=drop", "SIZE#=drop", "SIZE#y=drop",
                             "SIZE=delay:99999999999999999999", R"(X=reply:\q)", R"(X=reply:\x1)", R"(X=reply:\)"}) {
        EXPECT_THROW(parseFault(text), std::invalid_argument) << text;
    }
}

TEST(FaultPlan, CountsOccurrencesOfItsSession)
{
    FaultPlan plan({parseFault("SIZE#2=drop"), parseFault("2/RETR=stall"), parseFault("1/RETR=reset")}, 1);
    EXPECT_EQ(nullptr, plan.next("SIZE"));
    ASSERT_NE(nullptr, plan.next("size"));
    EXPECT_EQ(nullptr, plan.next("SIZE"));
    EXPECT_EQ(nullptr, plan.next("LIST"));
    const Fault* fault = plan.next("RETR");
    ASSERT_NE(nullptr, fault);
    EXPECT_EQ(Misbehaviour::Reset, fault->misbehaviour);
}

} // namespace
