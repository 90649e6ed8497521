// The password: never in a report, and never in the clear without the user's consent.
#include "doctor/Renderers.h"
#include "harness/Kinds.h"

#include <algorithm>
#include <sstream>

namespace {

std::string everythingAbout(const doctor::Report& report)
{
    std::ostringstream all;
    renderTable(report, predict(report), true, all);
    renderJson(report, predict(report), all);
    return all.str();
}

bool isInTheClear(const testserver::Transcript& session)
{
    return std::find(session.begin(), session.end(), "= TLS on control") == session.end();
}

bool sends(const testserver::Transcript& session, const std::string& command)
{
    return std::any_of(session.begin(), session.end(),
                       [&command](const std::string& line) { return line.compare(0, command.size(), command) == 0; });
}

class Secrecy : public OfAKind
{
};

TEST_P(Secrecy, KeepsThePasswordOutOfTheReport)
{
    const std::string all = everythingAbout(examine(question));
    EXPECT_FALSE(holds(request.password, all));
    EXPECT_EQ("", out->content() + err->content());
}

TEST_P(Secrecy, SendsNoPasswordInTheClearWithoutConsent)
{
    question.clearLogin = false;
    examine(question);
    for (const testserver::Transcript& session : sessions()) {
        EXPECT_FALSE(isInTheClear(session) && sends(session, "> PASS"));
    }
}

std::vector<Kind> listeningKinds()
{
    std::vector<Kind> those = kinds();
    those.erase(std::remove_if(those.begin(), those.end(), [](const Kind& each) { return each.id == "Refused"; }),
                those.end());
    return those;
}

INSTANTIATE_TEST_SUITE_P(OnAServer, Secrecy, testing::ValuesIn(listeningKinds()), idOf);

using SecrecyOf = Examined;

TEST_F(SecrecyOf, TheCountOfWrongPasswords)
{
    request.password = "wrong";
    const std::string own = request.caCert;
    const std::string another = testserver::CertificateAuthority("Another CA").certificatePem();
    serve();
    std::size_t logins = 0;
    // Trusted by both libraries, then by a session alone.
    for (const std::string& ca : {own, another + own}) {
        request.caCert = ca;
        askAbout(url("/"));
        question.clearLogin = true;
        examine(question);
        const std::vector<testserver::Transcript> all = sessions();
        const auto count = static_cast<std::size_t>(std::count_if(
            all.begin(), all.end(), [](const testserver::Transcript& each) { return sends(each, "> PASS"); }));
        EXPECT_EQ(1U, count - logins) << "a user can be locked out";
        logins = count;
    }
}

} // namespace
