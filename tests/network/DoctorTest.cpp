// What doctor finds out about a server on IPv6.
#include "harness/Addresses.h"
#include "harness/Place.h"

#include "support/Process.h"

namespace {

class DoctorOverIpv6 : public OverIpv6
{
};

} // namespace

TEST_F(DoctorOverIpv6, EverythingWorks)
{
    wanted.tls = testserver::TlsMode::Implicit;
    Place place(authority, wanted);
    const TextFile ca(authority.certificatePem());
    const std::string port = std::to_string(place.port());
    ProcessSetup setup{{SFTPCLIENT_COMMAND, "doctor", "ftps://backup@[::1]:" + port + "/d/", "--ca", ca.path()}};
    setup.environment = {{"SFTPCLIENT_PASSWORD", place.request.password},
                         {"SFTPCLIENT_DEFAULT_TRUST", ca.path()},
                         {"LD_PRELOAD", SFTPCLIENT_TRUST_LIBRARY}};
    const ProgramResult examined = runProgram(setup);
    EXPECT_TRUE(exited(0, examined));
    const Lines told = linesOf(examined.out);
    EXPECT_TRUE(holds(" ok    ::1 port " + port + "\n", examined.out));
    EXPECT_TRUE(holds(" ok    the certificate names ::1;", examined.out));
    for (const char* const operation : {"download", "upload  ", "rename  ", "delete  ", "list    ", "test    "}) {
        EXPECT_TRUE(hasLine(std::string("  ") + operation + "  works              works", told));
    }
}
