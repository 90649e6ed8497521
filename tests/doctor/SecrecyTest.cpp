// The password: never in a report, and never in the clear without the user's consent.
#include "doctor/Renderers.h"
#include "doctor/Transcript.h"
#include "harness/DoctorProcess.h"
#include "harness/Kinds.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <type_traits>

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

class SecrecyOf : public Examined
{
};

TEST_F(SecrecyOf, EverythingThatTheCommandPrints)
{
    misbehave("rm=reply:550 you said " + config.password);
    serve();
    writeFile(local("ca.pem"), request.caCert);
    for (const char* const form : {"--json", "--write"}) {
        SCOPED_TRACE(form);
        DoctorProcess process({url("/"), "--user", config.user, "--ca", local("ca.pem"), "--clear-login", form},
                              config.password);
        process.wait();
        EXPECT_NE("", process.out());
        EXPECT_FALSE(holds(config.password, (process.out() + process.err()))) << process.out();
    }
}

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

TEST(ServerTextTest, IsParsedAsItCameAndShownWithoutThePassword)
{
    const doctor::ServerText text("ab c a%62", PasswordMask("me", "ab"));
    EXPECT_EQ("ab c a%62", text.raw());
    EXPECT_TRUE(sameText("**** c ****", text.shown()));
    static_assert(!std::is_convertible_v<doctor::ServerText, std::string>, "neither form is taken by accident");
    static_assert(!std::is_convertible_v<doctor::ServerText, std::string_view>);
}

TEST(ReplyTest, ShowsItsCodeWhateverThePasswordIs)
{
    const auto shown = [](const std::string& line, const std::string& password) {
        const doctor::Reply reply = doctor::replyOf(line, PasswordMask("me", password));
        EXPECT_EQ(220, reply.code) << password;
        return reply.shown();
    };
    EXPECT_EQ("220 ready 22", shown("220 ready 22", "secret"));
    EXPECT_EQ("220 ready 22", shown("220 ready 22", "220"));
    EXPECT_EQ("220 ready ********", shown("220 ready 22", "2"));
    EXPECT_EQ("220", shown("220 ready 22", "220 ready")) << "which begins in the code";
    EXPECT_EQ("220", shown("220 ready 22", "0 r"));
    EXPECT_EQ("220", shown("220", "2"));
    EXPECT_EQ("220", shown("220 ", "2"));
}

TEST(TranscriptTest, KeepsOnlyTheWordOfPass)
{
    const PasswordMask mask("me", "secret");
    doctor::Transcript transcript(mask);
    transcript.addReply("220-hello\r\n220 re");
    transcript.addReply("ady\r\n");
    transcript.addCommand("PASS secret\r\n");
    transcript.addReply("230-some\r\n lines\r\n230 in, secret\r\n");
    transcript.addCommand("QUIT\r\n");
    ASSERT_EQ(3U, transcript.exchanges().size());
    EXPECT_TRUE(sameText("220 ready", transcript.exchanges()[0].reply.shown()));
    EXPECT_EQ("PASS", transcript.exchanges()[1].command);
    EXPECT_EQ(230, transcript.exchanges()[1].reply.code);
    EXPECT_TRUE(sameText("230 in, ****", transcript.exchanges()[1].reply.shown()));
    EXPECT_EQ(doctor::Ending::NotTried, transcript.exchanges()[2].reply.ending);
}

TEST(TranscriptTest, KeepsTheBeginningOfALongLine)
{
    const PasswordMask mask("me", "secret");
    doctor::Transcript transcript(mask);
    transcript.addReply("220 " + std::string(5000, '.'));
    transcript.addReply("530 the same line\r\n");
    const doctor::Reply& reply = transcript.exchanges()[0].reply;
    EXPECT_EQ(220, reply.code);
    EXPECT_EQ(std::string(4092, '.'), reply.text.raw());
}

TEST(TranscriptTest, FindsACommandThatIsAlsoThePassword)
{
    const PasswordMask mask("me", "USER");
    doctor::Transcript transcript(mask);
    transcript.addCommand("USER me\r\n");
    transcript.addReply("331 USER\r\n");
    doctor::ProbeResult visit;
    visit.transcript = transcript.exchanges();
    ASSERT_NE(nullptr, visit.replyTo("USER"));
    EXPECT_EQ("331 ****", visit.replyTo("USER")->shown());
}

} // namespace
