// A proxy in the environment: doctor goes around it, and says what a host would do.
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"
#include "harness/Golden.h"
#include "harness/ProxyTrap.h"

#include <nlohmann/json.hpp>

#include <cstdlib>

namespace {

constexpr char kLoginToTheProxy[] = "warn: a host with this environment sends its login and data to the proxy that "
                                    "ftp_proxy names, the login in the clear; doctor went around it";

class InTheEnvironment : public Examined
{
protected:
    /// What a process with these variables says of the proxy. It writes, too.
    std::string rowWith(const std::vector<std::string>& variables)
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

    const ProxyTrap trap;
    int status = -1;
};

TEST_F(InTheEnvironment, AnHttpProxyIsNotedAndNotUsed)
{
    EXPECT_EQ(kLoginToTheProxy, rowWith({"ftp_proxy=http://" + trap.address()}));
    EXPECT_EQ(0, status);
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, AnExceptionForTheHostCounts)
{
    EXPECT_EQ("no row", rowWith({"ftp_proxy=http://" + trap.address(), "no_proxy=example.com,localhost"}));
    EXPECT_EQ("no row", rowWith({"ftps_proxy=http://" + trap.address()}));
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, ASocksProxyIsNotToldTheLogin)
{
    EXPECT_EQ(
        "warn: a host with this environment connects through the proxy that ALL_PROXY names; doctor went around it",
        rowWith({"ALL_PROXY=socks5h://" + trap.address()}));
    EXPECT_EQ(0, status);
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, WithImplicitTlsTheProxyIsNotToldTheLogin)
{
    config.tls = testserver::TlsMode::Implicit;
    EXPECT_EQ(
        "warn: a host with this environment connects through the proxy that all_proxy names; doctor went around it",
        rowWith({"all_proxy=" + trap.address()}));
    EXPECT_FALSE(trap.wasReached());
}

/// The variable in this process, as a host has it.
class SetVariable
{
public:
    SetVariable(const char* name, const std::string& value) : m_name(name) { setenv(name, value.c_str(), 1); }
    ~SetVariable() { unsetenv(m_name); }
    SetVariable(const SetVariable&) = delete;
    SetVariable& operator=(const SetVariable&) = delete;

private:
    const char* m_name;
};

TEST_F(InTheEnvironment, NoProbeObeysIt)
{
    const SetVariable variable("all_proxy", "http://" + trap.address());
    serveAndAsk();
    question.clearLogin = true;
    EXPECT_EQ("WWWWWW", outlooksOf(predict(examine(question))));
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, TheProbeOfAHostKeyDoesNotObeyIt)
{
    const SetVariable variable("all_proxy", "http://" + trap.address());
    misbehave("GREETING=last:SSH-2.0-fake");
    serve();
    askAbout("sftp" + url("/").substr(3));
    EXPECT_EQ("FFFFFF", outlooksOf(predict(examine(question))));
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(InTheEnvironment, Table)
{
    serveAndAsk();
    question.proxy = {"ftp_proxy", true};
    expectGolden("BehindAProxy", normalisedTable(examine(question)));
}

} // namespace
