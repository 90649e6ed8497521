// A proxy in the environment: doctor bypasses it, and reports what a host would do.
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"
#include "support/LoopbackPort.h"

#include <nlohmann/json.hpp>

namespace {

constexpr char kLoginToTheProxy[] = "warn: a host with this environment sends its login and data to the proxy that "
                                    "ftp_proxy names, the login in the clear; doctor went around it";

class InTheEnvironment : public Examined
{
protected:
    InTheEnvironment() { trap.listen(); }

    /// What a process with these variables reports about the proxy. It runs with --write.
    std::string rowWith(const Variables& variables)
    {
        serve();
        writeFile(local("ca.pem"), request.caCert);
        DoctorProcess process(
            {url("/"), "--user", config.user, "--ca", local("ca.pem"), "--clear-login", "--write", "--json"},
            config.password, variables);
        status = process.wait();
        const nlohmann::json report = nlohmann::json::parse(process.out());
        for (const auto& each : report["findings"]) {
            if (each["probe"] == "proxy") {
                return each["grade"].get<std::string>() + ": " + each["seen"].get<std::string>();
            }
        }
        return "no row";
    }

    const LoopbackPort trap; // in place of a proxy; nobody must connect to it
    int status = -1;
};

TEST_F(InTheEnvironment, AnHttpProxyIsNotedAndNotUsed)
{
    EXPECT_EQ(kLoginToTheProxy, rowWith({{"ftp_proxy", "http://" + trap.address()}}));
    EXPECT_EQ(0, status);
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, AnExceptionForTheHostCounts)
{
    EXPECT_EQ("no row", rowWith({{"ftp_proxy", "http://" + trap.address()}, {"no_proxy", "example.com,localhost"}}));
    EXPECT_EQ("no row", rowWith({{"ftps_proxy", "http://" + trap.address()}}));
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, ASocksProxyDoesNotGetTheLogin)
{
    EXPECT_EQ(
        "warn: a host with this environment connects through the proxy that ALL_PROXY names; doctor went around it",
        rowWith({{"ALL_PROXY", "socks5h://" + trap.address()}}));
    EXPECT_EQ(0, status);
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, WithImplicitTlsTheProxyDoesNotGetTheLogin)
{
    config.tls = testserver::TlsMode::Implicit;
    EXPECT_EQ(
        "warn: a host with this environment connects through the proxy that all_proxy names; doctor went around it",
        rowWith({{"all_proxy", trap.address()}}));
    EXPECT_FALSE(trap.wasReached());
}

} // namespace
