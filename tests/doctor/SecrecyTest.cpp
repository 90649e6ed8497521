// The password: in nothing that the command prints, and in no text of a server that is shown.
#include "doctor/Transcript.h"
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"

#include <string_view>
#include <type_traits>

namespace {

using SecrecyOf = Examined;

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

TEST(TranscriptTest, MasksAPasswordThatTheEndOfALongLineWouldCut)
{
    const PasswordMask mask("me", "secret");
    doctor::Transcript transcript(mask);
    transcript.addReply("220 " + std::string(4088, '.') + "secret and more\r\n");
    EXPECT_TRUE(sameText(std::string(4088, '.') + "****", transcript.exchanges()[0].reply.text.shown()));
    transcript.beginAnew();
    transcript.addReply(std::string(4092, '.') + "secret and more");
    transcript.end(CURLE_RECV_ERROR);
    EXPECT_TRUE(sameText(std::string(4092, '.') + "****", transcript.exchanges()[1].reply.text.shown()));
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
