// Servers on IPv6, hosts of which one address is dead, and ports for data connections announced as behind a NAT.
#include "harness/Addresses.h"
#include "harness/DeadAddress.h"
#include "harness/Place.h"

#include "support/Process.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/system/system_error.hpp>

#include <optional>
#include <set>
#include <tuple>

namespace {

using boost::asio::ip::tcp;
using testserver::TlsMode;

using Operations = std::set<Operation>;

void expectDone(const Place::Outcome& outcome)
{
    EXPECT_EQ(0, outcome.code) << outcome.errorText;
    EXPECT_TRUE(outcome.isDone);
}

// All operations succeed.
void expectAll(Place& place)
{
    for (const Client client : kClients) {
        for (const Operation operation : kOperations) {
            SCOPED_TRACE(nameOf(client) + ", " + nameOf(operation));
            expectDone(place.run(client, operation));
        }
    }
}

// All that need a data connection end with this code; the others, of a session, succeed.
void expectNoData(Place& place, int code)
{
    for (const Client client : kClients) {
        for (const Operation operation : kOperations) {
            SCOPED_TRACE(nameOf(client) + ", " + nameOf(operation));
            const bool hasData =
                client == Client::Core ||
                Operations{Operation::Upload, Operation::List, Operation::Download}.count(operation) == 1;
            EXPECT_EQ(hasData ? code : 0, place.run(client, operation).code);
        }
    }
}

} // namespace

class OverIpv6WithTls : public OverIpv6, public testing::WithParamInterface<TlsMode>
{
};

TEST_P(OverIpv6WithTls, EachOperationWorks)
{
    wanted.tls = GetParam();
    Place place(authority, wanted);
    place.aim(place.port(), "[::1]");
    expectAll(place);
}

INSTANTIATE_TEST_SUITE_P(Modes, OverIpv6WithTls, testing::Values(TlsMode::Explicit, TlsMode::Implicit),
                         [](const auto& each) {
                             return std::string(each.param == TlsMode::Explicit ? "Explicit" : "Implicit");
                         });

// PASV has no room for such an address, so libcurl does not try it.
TEST_F(OverIpv6, WithoutEpsvThereIsNoData)
{
    misbehave("EPSV=reply:500 unknown");
    Place place(authority, wanted);
    place.aim(place.port(), "[::1]");
    expectNoData(place, CURLE_WEIRD_SERVER_REPLY);
    for (const Lines& session : place.transcripts()) {
        EXPECT_FALSE(std::count(session.begin(), session.end(), "> PASV"));
    }
}

TEST_F(OverIpv6, TheCommandWorks)
{
    Place place(authority, wanted);
    expectDone(place.run(Client::Session, Operation::Test));
    const TextFile ca(authority.certificatePem());
    ProcessSetup setup{
        {SFTPCLIENT_COMMAND, "ls", "ftp://backup@[::1]:" + std::to_string(place.port()) + "/d/", "--ca", ca.path()}};
    setup.environment = {{"SFTPCLIENT_PASSWORD", place.request.password}};
    const ProgramResult listed = runProgram(setup);
    EXPECT_TRUE(exited(0, listed));
    EXPECT_EQ("a.bak\n", listed.out);
}

// Clients of "localhost" try both addresses. Another server there would be somebody else's.
TEST_F(OverIpv6, AServersPortIsTakenOnTheOtherAddressToo)
{
    Place place(authority, wanted);
    boost::asio::io_context context;
    tcp::socket other(context, tcp::v4());
    boost::system::error_code failed;
    other.bind({boost::asio::ip::address_v4::loopback(), place.port()}, failed);
    EXPECT_EQ(boost::asio::error::address_in_use, failed);
}

// "localhost" has both addresses to libcurl, whatever the machine's /etc/hosts says.
class OneAddressIsDead : public OverIpv6, public testing::WithParamInterface<std::tuple<const char*, Death>>
{
};

TEST_P(OneAddressIsDead, TheOtherIsTaken)
{
    const auto [dead, death] = GetParam();
    wanted.address = dead == kIpv4 ? kIpv6 : kIpv4;
    // The port must be free on both.
    std::optional<DeadAddress> address;
    std::unique_ptr<Place> place;
    for (int i = 0; i < 20 && !place; ++i) {
        try {
            wanted.port = address.emplace(dead, death).port();
            place = std::make_unique<Place>(authority, wanted);
        } catch (const boost::system::system_error&) {
        }
    }
    ASSERT_TRUE(place);
    place->options.connectTimeout = std::chrono::minutes(5);
    expectAll(*place);
}

INSTANTIATE_TEST_SUITE_P(Hosts, OneAddressIsDead,
                         testing::Combine(testing::Values(kIpv4, kIpv6),
                                          testing::Values(Death::Refuses, Death::Silent)),
                         [](const auto& each) {
                             return std::string(std::get<0>(each.param) == kIpv4 ? "Ipv4" : "Ipv6") +
                                    (std::get<1>(each.param) == Death::Refuses ? "Refuses" : "Silent");
                         });

// A server behind a NAT names the address that it has there, or none.
class BehindANat : public Addresses, public testing::WithParamInterface<const char*>
{
};

TEST_P(BehindANat, TheAddressInThePasvReplyIsIgnored)
{
    misbehave("EPSV=reply:500 unknown");
    wanted.announcedAddress = GetParam();
    Place place(authority, wanted);
    expectAll(place);
    const std::string reply = std::string("< 227 Entering Passive Mode (") + GetParam() + ",PORT)";
    EXPECT_TRUE(hasLine(reply, place.transcripts().at(1)));
}

INSTANTIATE_TEST_SUITE_P(Addresses, BehindANat, testing::Values("192,0,2,1", "10,0,0,5", "0,0,0,0"),
                         [](const auto& each) {
                             std::string name = each.param;
                             std::replace(name.begin(), name.end(), ',', '_');
                             return "Of" + name;
                         });

// The protocol allows it, but libcurl knows only the form without an address.
TEST_F(Addresses, AnEpsvReplyWithAnAddressIsNotUnderstood)
{
    misbehave("EPSV=reply:229 here (|1|127.0.0.1|1024|)");
    Place place(authority, wanted);
    expectNoData(place, CURLE_FTP_WEIRD_PASV_REPLY);
}
