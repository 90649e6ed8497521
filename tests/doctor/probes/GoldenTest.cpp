// What doctor prints for each kind of server.
#include "harness/Golden.h"
#include "harness/Kinds.h"

namespace {

using Golden = OfAKind;

TEST_P(Golden, Table) { expectGolden(GetParam().id, normalisedTable(examine(question))); }

INSTANTIATE_TEST_SUITE_P(OfAServer, Golden,
                         testing::ValuesIn(kindsNamed({"Fine", "FineImplicit", "WrongCa", "Expired",
                                                       "WrongHostImplicit", "OldTlsOnly", "NoTls", "TlsDemandedAtLogin",
                                                       "WrongPassword", "Refused", "GreetingIs421", "MissingDirectory",
                                                       "NoVerbs", "LoginLeadsElsewhere", "DataPortClosed"})),
                         idOf);

class WithoutConsent : public Examined
{
};

TEST_F(WithoutConsent, Table)
{
    serveAndAsk();
    expectGolden("FineWithoutClearLogin", normalisedTable(examine(question)));
}

} // namespace
