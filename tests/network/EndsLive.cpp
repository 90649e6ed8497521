// Servers whose TLS connections, for commands and for data, end without close_notify, as those of some Windows servers.
#include "harness/Place.h"

#include "support/CurlRelease.h"
#include "support/Live.h"

#include <openssl/ssl.h>

#include <tuple>

namespace {

using testserver::TlsMode;

class UnannouncedEnds : public Live
{
protected:
    UnannouncedEnds()
    {
        trustByDefault(authority.certificatePem());
        wanted.endsUnannounced = true;
    }

    void misbehave(const std::string& fault) { wanted.faults.push_back(testserver::parseFault(fault)); }

    testserver::ServerConfig wanted;
};

constexpr std::size_t kAll = 100000;

// Whether the operation has a data connection for a listing. A session's rename, delete and test have none.
bool lists(Client client, Operation operation)
{
    return operation == Operation::List ||
           (client == Client::Core && operation != Operation::Upload && operation != Operation::Download);
}

} // namespace

// A file is whole where it has the size that the server reports; nothing reports a listing's. libcurl 8.14 does not
// believe that a file is empty either.
class UnannouncedEndsOf : public UnannouncedEnds,
                          public testing::WithParamInterface<std::tuple<TlsMode, int, std::size_t>>
{
};

TEST_P(UnannouncedEndsOf, WholeTransfersAreNoFailures)
{
    const auto [mode, version, bytes] = GetParam();
    wanted.tls = mode;
    wanted.minTlsVersion = wanted.maxTlsVersion = version;
    Place place(authority, wanted, bytes);
    for (const Client client : kClients) {
        for (const Operation operation : kOperations) {
            SCOPED_TRACE(nameOf(client) + ", " + nameOf(operation));
            const Place::Outcome outcome = place.run(client, operation);
            const bool isEmptyFile = operation == Operation::Download && bytes == 0;
            const bool isRefused = isCurl814() && (lists(client, operation) || isEmptyFile);
            EXPECT_EQ(isRefused ? CURLE_RECV_ERROR : CURLE_OK, outcome.code) << outcome.errorText;
            EXPECT_TRUE(outcome.isDone || isRefused);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Servers, UnannouncedEndsOf,
                         testing::Combine(testing::Values(TlsMode::Explicit, TlsMode::Implicit),
                                          testing::Values(TLS1_2_VERSION, TLS1_3_VERSION),
                                          testing::Values(std::size_t{0}, kAll)),
                         [](const auto& each) {
                             return std::string(std::get<0>(each.param) == TlsMode::Explicit ? "Explicit"
                                                                                             : "Implicit") +
                                    (std::get<1>(each.param) == TLS1_2_VERSION ? "Tls12" : "Tls13") +
                                    (std::get<2>(each.param) == 0 ? "Empty" : "");
                         });

TEST_F(UnannouncedEnds, BeforeTheSizeIsReachedAreFailures)
{
    misbehave("DATA=claim-after:50000");
    Place place(authority, wanted, kAll);
    const int expected = brokenData();
    EXPECT_EQ(expected, place.run(Client::Core, Operation::Download).code);
    EXPECT_EQ(50000, place.bytesLeft()) << "the core leaves what has arrived";
    EXPECT_EQ(expected, place.run(Client::Session, Operation::Download).code);
    EXPECT_EQ(-1, place.bytesLeft());
}

// The core's size check needs SIZE; the download behind it, on a connection of its own, does not notice.
TEST_F(UnannouncedEnds, OfFilesOfUnknownSizeAreFailuresOfASession)
{
    misbehave("2/SIZE=reply:500 unknown");
    misbehave("3/SIZE=reply:500 unknown");
    misbehave("DATA=claim-after:50000");
    Place place(authority, wanted, kAll);
    EXPECT_EQ(isCurl814() ? CURLE_RECV_ERROR : CURLE_OK, place.run(Client::Core, Operation::Download).code);
    EXPECT_EQ(50000, place.bytesLeft());
    const Place::Outcome session = place.run(Client::Session, Operation::Download);
    EXPECT_EQ(CURLE_RECV_ERROR, session.code) << session.errorText;
    EXPECT_EQ(-1, place.bytesLeft());
    if (!isCurl814()) {
        EXPECT_EQ("Failure when receiving data from the peer: the server has neither reported a size nor "
                  "announced the end of the data with close_notify (the server's last reply: 226 done)",
                  session.errorText);
    }
}

// On servers that require each data connection to resume the control connection's TLS session, too.
TEST_F(UnannouncedEnds, LeaveTheTlsSessionValid)
{
    wanted.tlsReuseRequired = true;
    Place place(authority, wanted, kAll);
    for (const Client client : kClients) {
        for (const Operation operation : {Operation::List, Operation::List, Operation::Download, Operation::Upload,
                                          Operation::Download, Operation::List}) {
            SCOPED_TRACE(nameOf(client) + ", " + nameOf(operation));
            const Place::Outcome outcome = place.run(client, operation);
            EXPECT_EQ(operation == Operation::List && isCurl814() ? CURLE_RECV_ERROR : CURLE_OK, outcome.code)
                << outcome.errorText;
        }
    }
}
