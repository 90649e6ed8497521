// A proxy in the environment: no probe uses it.
#include "harness/Examined.h"
#include "harness/Golden.h"
#include "support/LoopbackPort.h"
#include "support/SetVariable.h"

namespace {

class ProxyOfTheEnvironment : public Examined
{
protected:
    ProxyOfTheEnvironment() { trap.listen(); }

    const LoopbackPort trap; // in place of a proxy; nobody must connect to it
};

TEST_F(ProxyOfTheEnvironment, NoProbeUsesIt)
{
    const SetVariable variable("all_proxy", "http://" + trap.address());
    serveAndAsk();
    question.clearLogin = true;
    EXPECT_EQ("WWWWWW", outlooksOf(predict(examine(question))));
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(ProxyOfTheEnvironment, TheHostKeyProbeDoesNotUseIt)
{
    const SetVariable variable("all_proxy", "http://" + trap.address());
    misbehave("GREETING=last:SSH-2.0-fake");
    serve();
    askAbout("sftp" + url("/").substr(3));
    EXPECT_EQ("FFFFFF", outlooksOf(predict(examine(question))));
    EXPECT_FALSE(trap.wasReached());
}

TEST_F(ProxyOfTheEnvironment, Table)
{
    serveAndAsk();
    question.proxy = {"ftp_proxy", true};
    expectGolden("BehindAProxy", normalisedTable(examine(question)));
}

} // namespace
