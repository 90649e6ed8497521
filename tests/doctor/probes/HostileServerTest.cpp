// Servers that send nothing, too much, or control characters for a terminal.
#include "doctor/Renderers.h"
#include "harness/Examined.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace {

class HostileServer : public Examined
{
protected:
    /// For servers that make the doctor wait. A busy machine must answer in that time where the server does.
    void waitBriefly() { question.limit = std::chrono::seconds(4); }

    /// A greeting of one line, padded to this length, is whole, and so much of its text is kept.
    void expectKept(std::size_t text, const std::string& length)
    {
        misbehave("GREETING=pad:" + length);
        serveAndAsk();
        const doctor::Reply greeting = examine(question).contact.greeting;
        EXPECT_EQ(doctor::Ending::Complete, greeting.ending);
        EXPECT_EQ(text, greeting.text.raw().size());
    }

    std::string tableOf(const doctor::Report& report)
    {
        std::ostringstream stream;
        renderTable(report, predict(report), false, stream);
        return stream.str();
    }
    static nlohmann::json jsonOf(const doctor::Report& report)
    {
        std::ostringstream stream;
        renderJson(report, predict(report), stream);
        return nlohmann::json::parse(stream.str());
    }
};

bool holdsControlByte(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte < 0x20 && byte != '\n') || byte == 0x7f;
    });
}

TEST_F(HostileServer, ControlBytesAreEscaped)
{
    misbehave("GREETING=reply:220 \\x1b[2J\\x07\\x9b\\x00 hi");
    misbehave("rm=reply:500 \\x1b]0;title\\x07");
    serveAndAsk();
    const doctor::Report report = examine(question);
    EXPECT_FALSE(holdsControlByte(tableOf(report))) << tableOf(report);
    EXPECT_TRUE(holds("220 \\x1b[2J\\x07", tableOf(report)));
    const nlohmann::json findings = jsonOf(report)["findings"];
    const auto greeting =
        std::find_if(findings.begin(), findings.end(), [](const auto& each) { return each["probe"] == "greeting"; });
    ASSERT_NE(findings.end(), greeting);
    EXPECT_EQ(std::string("220 \x1b[2J\x07\xef\xbf\xbd\0 hi", 16), (*greeting)["seen"]);
}

TEST_F(HostileServer, NamesInCertificatesAreEscapedOnce)
{
    testserver::CertificateOptions options;
    options.commonName = "a\x1b[2J";
    config.certificate = authority.issue(options);
    serveAndAsk();
    const doctor::Report report = examine(question);
    EXPECT_EQ("CN = a\x1b[2J", jsonOf(report)["certificates"][0]["subject"]);
    EXPECT_TRUE(holds("CN = a\\x1b[2J, issued by", tableOf(report)));
}

struct Silence
{
    const char* id;
    const char* fault;
    std::string outlooks;
    std::size_t sessions;
    const char* reason = nullptr; ///< of the last prediction
    testserver::TlsMode tls = testserver::TlsMode::Explicit;
    bool clearLogin = false;
};

void PrintTo(const Silence& silence, std::ostream* stream) { *stream << silence.id; }

class SilentServer : public HostileServer, public testing::WithParamInterface<Silence>
{
};

TEST_P(SilentServer, IsWaitedForOnce)
{
    const Silence& silence = GetParam();
    waitBriefly();
    config.tls = silence.tls;
    misbehave(silence.fault);
    serveAndAsk();
    question.clearLogin = silence.clearLogin;
    const std::vector<doctor::Prediction> predictions = predict(examine(question));
    EXPECT_EQ(silence.outlooks, outlooksOf(predictions));
    EXPECT_EQ(silence.sessions, sessions().size());
    if (silence.reason != nullptr) {
        EXPECT_EQ(silence.reason, predictions.back().reason);
    }
}

const Silence kSilences[] = {
    {"Greeting", "GREETING=stall", "FFFFFF", 1, nullptr, testserver::TlsMode::Explicit, true},
    // AUTH, and the user's name in the clear.
    {"Auth", "AUTH=stall", "F?FFFF", 2},
    {"Handshake", "TLS=stall", "F?FFFF", 2},
    {"ImplicitHandshake", "TLS=stall", "FFFFFF", 1, "the server falls silent when TLS is to begin",
     testserver::TlsMode::Implicit},
    {"Login", "PASS=stall", "F?FFFF", 5},
};
INSTANTIATE_TEST_SUITE_P(At, SilentServer, testing::ValuesIn(kSilences),
                         [](const testing::TestParamInfo<Silence>& of) { return std::string(of.param.id); });

TEST_F(HostileServer, AnImplicitServerBehindAnFtpUrlIsRecognised)
{
    waitBriefly();
    config.tls = testserver::TlsMode::Implicit;
    serve();
    askAbout("ftp" + url("/").substr(4));
    const doctor::Prediction test = predict(examine(question)).back();
    EXPECT_EQ("If it expects TLS from the first byte, use an ftps: URL; else look at the server, or at a firewall "
              "before it.",
              test.remedy);
}

TEST_F(HostileServer, AnFtpsUrlIsNotTheRemedyForAnFtpsUrl)
{
    waitBriefly();
    config.tls = testserver::TlsMode::Implicit;
    misbehave("GREETING=stall");
    serveAndAsk();
    EXPECT_EQ("Look at the server, or at a firewall before it.", predict(examine(question)).back().remedy);
}

TEST_F(HostileServer, AnSshServerBehindAnFtpUrlIsRecognised)
{
    waitBriefly();
    misbehave("GREETING=reply:SSH-2.0-OpenSSH_9.2");
    serveAndAsk();
    EXPECT_EQ("Use an sftp: URL, or the port of the FTP server.", predict(examine(question)).back().remedy);
}

TEST_F(HostileServer, AnFtpServerBehindAnSftpUrlIsRecognised)
{
    waitBriefly();
    serve();
    askAbout("sftp" + url("/").substr(3));
    const doctor::Prediction test = predict(examine(question)).back();
    EXPECT_EQ("no SSH server answers there (220 ready)", test.reason);
}

TEST_F(HostileServer, AnEndlessGreetingEnds)
{
    misbehave("GREETING=pad:1000000");
    serveAndAsk();
    const doctor::Report report = examine(question);
    EXPECT_EQ("FFFFFF", outlooksOf(predict(report)));
    EXPECT_LT(tableOf(report).size(), 50000U);
}

TEST_F(HostileServer, AGreetingOfManyLinesIsReadToItsEnd)
{
    std::string greeting = "GREETING=reply:";
    for (int line = 0; line < 9000; ++line) {
        greeting += R"(220-hello\r\n)";
    }
    misbehave(greeting + "220 ready");
    serveAndAsk();
    EXPECT_EQ("??WWWW", outlooksOf(predict(examine(question))));
}

TEST_F(HostileServer, AGreetingOfEndlessLinesEndsBeforeTheTimeLimit)
{
    misbehave("GREETING=endless:220-hello");
    serveAndAsk();
    EXPECT_EQ(doctor::Ending::Garbled, examine(question).contact.greeting.ending);
}

TEST_F(HostileServer, ALongerLineIsTruncatedTo4096Bytes) { expectKept(4092, "4096"); }

TEST_F(HostileServer, ALineOf4095BytesIsKeptWhole) { expectKept(4090, "4094"); }

TEST_F(HostileServer, ALongListingIsTruncatedToOneMebibyte)
{
    constexpr std::size_t kLine = 200;
    constexpr std::size_t kLines = 6000;
    for (std::size_t i = 0; i < kLines; ++i) {
        writeFile(served(std::to_string(10000 + i) + std::string(kLine - 6, 'a')), "");
    }
    serveAndAsk();
    const doctor::Report report = examine(question);
    EXPECT_TRUE(report.client.listing.names.isCut());
    EXPECT_EQ((std::size_t{1} << 20) / kLine + 1, report.client.listing.names.lines());
    EXPECT_TRUE(holds("listing of names   ok    at least 5243 lines\n", tableOf(report)));
}

TEST_F(HostileServer, ALongReplyIsKeptWhole)
{
    misbehave("SIZE=pad:3000");
    serveAndAsk();
    EXPECT_EQ("??WWWW", outlooksOf(predict(examine(question))));
}

TEST_F(HostileServer, NamesThatDoNotResolve)
{
    request.port = 21;
    askAbout("ftp://no-such-host.invalid/");
    const doctor::Report report = examine(question);
    EXPECT_EQ("FFFFFF", outlooksOf(predict(report)));
    EXPECT_EQ(6, predict(report).back().code);
    EXPECT_EQ("the name no-such-host.invalid has no address", predict(report).back().reason);
}

} // namespace
