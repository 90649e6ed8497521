// How many connections and logins doctor makes, and what it makes of servers that contradict themselves.
#include "doctor/Renderers.h"
#include "harness/Examined.h"
#include "harness/Truth.h"

#include <algorithm>
#include <sstream>

namespace {

class Evidence : public Examined
{
protected:
    doctor::Report examined()
    {
        serveAndAsk();
        question.clearLogin = true;
        return examine(question);
    }

    static std::string seenBy(const std::string& probe, const doctor::Report& report)
    {
        for (const doctor::Finding& each : findingsOf(report)) {
            if (each.probe == probe) {
                return each.seen;
            }
        }
        return "no row";
    }
};

TEST_F(Evidence, TakesSixConnectionsAndTwoLogins)
{
    EXPECT_EQ("WWWWWW", outlooksOf(predict(examined())));
    EXPECT_EQ(6U, sessions().size());
    std::size_t logins = 0;
    for (const testserver::Transcript& session : sessions()) {
        logins += static_cast<std::size_t>(std::count_if(
            session.begin(), session.end(), [](const std::string& line) { return line.compare(0, 6, "> PASS") == 0; }));
    }
    EXPECT_EQ(2U, logins);
}

TEST_F(Evidence, IsRepeatedIfAConnectionIsTurnedAway)
{
    misbehave("2/GREETING=reply:421 too many");
    misbehave("4/GREETING=drop");
    misbehave("8/GREETING=reply:530 too many");
    const doctor::Report report = examined();
    EXPECT_EQ("WWWWWW", outlooksOf(predict(report)));
    EXPECT_EQ(9U, sessions().size());
    EXPECT_EQ("the server turned one away after others (530 too many), so it was made again after a pause: it limits "
              "the connections of an address; a session then needs a lower SessionOptions::maxConnections",
              seenBy("connections", report));
}

TEST_F(Evidence, OfALimitIsLookedForWhileAConnectionIsOpen)
{
    misbehave("5/GREETING=reply:421 one at a time");
    const doctor::Report report = examined();
    EXPECT_EQ("WWWWWW", outlooksOf(predict(report)));
    EXPECT_EQ(6U, sessions().size());
    EXPECT_EQ("the server turns away a second one (421 one at a time): it limits the connections of an address; set "
              "SessionOptions::maxConnections to 1, and give push and pull --jobs 1",
              seenBy("connections", report));
}

TEST_F(Evidence, GivesUpAConnectionThatIsTurnedAwayAgainAndAgain)
{
    for (const char* const session : {"4", "5", "6", "7"}) {
        misbehave(std::string(session) + "/GREETING=reply:421 too many");
    }
    EXPECT_EQ("FWFFFF", outlooksOf(predict(examined())));
}

TEST_F(Evidence, OfAVerbIsLostAloneIfTheServerDropsTheConnectionThere)
{
    misbehave("rename=drop");
    const std::vector<doctor::Prediction> predictions = predict(examined());
    EXPECT_EQ("WW?WWW", outlooksOf(predictions));
    EXPECT_EQ("the server closes the connection at the command \"rename\"", predictions[2].reason);
}

struct Drop
{
    const char* command;
    const char* outlooks;
    const char* ofSession;
};

void PrintTo(const Drop& drop, std::ostream* stream) { *stream << drop.command; }

class EvidenceOfADrop : public Evidence, public testing::WithParamInterface<Drop>
{
protected:
    /// Of these, what is not known leaves nothing to compare.
    void expectTruthOfTheKnown(std::vector<doctor::Prediction> predictions, std::vector<int> truth)
    {
        for (std::size_t i = predictions.size(); i-- > 0;) {
            if (predictions[i].outlook == doctor::Outlook::Unknown) {
                EXPECT_NE(0, truth[i]) << predictions[i].operation;
                EXPECT_TRUE(holds(std::string("the server closes the connection at the command ") + GetParam().command,
                                  predictions[i].reason))
                    << predictions[i].reason;
                const auto place = static_cast<std::ptrdiff_t>(i);
                predictions.erase(predictions.begin() + place);
                truth.erase(truth.begin() + place);
            }
        }
        expectTruth(predictions, truth);
    }
};

TEST_P(EvidenceOfADrop, CostsThatCommandAloneItsVerdict)
{
    misbehave(std::string(GetParam().command) + "=drop");
    const std::vector<doctor::Prediction> predictions = predict(examined());
    EXPECT_EQ(GetParam().outlooks, outlooksOf(predictions));
    EXPECT_EQ(GetParam().ofSession, outlooksOf(ofSession(predictions)));
    const auto keep = [this](const std::string& name, const std::string& content) { writeFile(served(name), content); };
    expectTruthOfTheKnown(predictions, truthOf(question, local("scratch"), keep));
    expectTruthOfTheKnown(ofSession(predictions), truthOfSession(question, local("scratch"), keep));
}

constexpr Drop kDrops[] = {
    {"SIZE", "?WWWWW", "??WWWW"},
    {"DELE", "WWWWWW", "WWW?WW"},
    {"RNFR", "WWWWWW", "W??WWW"},
};

INSTANTIATE_TEST_SUITE_P(At, EvidenceOfADrop, testing::ValuesIn(kDrops),
                         [](const testing::TestParamInfo<Drop>& of) { return std::string(of.param.command); });

// They lose the connection after a reply that has been heard.
TEST_F(Evidence, OutlivesConnectionsThatEndAfterAReply)
{
    for (const char* const fault : {"SIZE=last:550 no", "DELE=last:550 no", "RNFR=last:550 no"}) {
        misbehave(fault);
    }
    const std::vector<doctor::Prediction> predictions = predict(examined());
    EXPECT_EQ("WWWWWW", outlooksOf(predictions));
    EXPECT_EQ("WWWWWW", outlooksOf(ofSession(predictions)));
}

TEST_F(Evidence, IsSeenWithACaAsDerThatHoldsTheWordsOfPem)
{
    const testserver::CertificateAuthority named("-----BEGIN CERTIFICATE-----");
    config.certificate = named.issue({});
    request.caCert = named.certificateDer();
    const doctor::Report report = examined();
    EXPECT_EQ("offered: TLS_AES_256_GCM_SHA384", seenBy("TLS 1.3", report));
    const auto keep = [this](const std::string& name, const std::string& content) { writeFile(served(name), content); };
    expectTruth(ofSession(predict(report)), truthOfSession(question, local("scratch"), keep));
}

TEST_F(Evidence, DoesNotTellALocalFailureAsTheServers)
{
    request.caCert = authority.certificatePem() + "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n";
    const doctor::Report report = examined();
    EXPECT_EQ("not tried: libcurl cannot use the CA certificates", seenBy("TLS 1.3", report));
    const std::vector<doctor::Prediction> predictions = ofSession(predict(report));
    EXPECT_EQ("FFFFFF", outlooksOf(predictions));
    const auto keep = [this](const std::string& name, const std::string& content) { writeFile(served(name), content); };
    expectTruth(predictions, truthOfSession(question, local("scratch"), keep));
}

TEST_F(Evidence, NamesTheRightOneOfTwoCertificates)
{
    request.caCert = testserver::CertificateAuthority("Another CA").certificatePem() + authority.certificatePem();
    const doctor::Prediction list = predict(examined())[4];
    EXPECT_EQ(60, list.code);
    EXPECT_EQ(
        "the certificate is issued by \"CN = Test CA\", and of the given certificates SFtpClient trusts the first "
        "alone, which is another",
        list.reason);
    EXPECT_EQ(
        "Use SFtpSession, with which it works. With SFtpClient: Give the host the certificate of \"CN = Test CA\" "
        "alone, or as the first.",
        list.remedy);
    EXPECT_EQ(doctor::Outlook::Works, list.session.outlook);
}

struct Refusal
{
    const char* reply;
    const char* remedy;
};

void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.reply; }

class EvidenceOfARefusal : public Evidence, public testing::WithParamInterface<Refusal>
{
};

TEST_P(EvidenceOfARefusal, IsQuotedAndLeadsToTheRemedy)
{
    misbehave(std::string("NLST=reply:") + GetParam().reply);
    const doctor::Prediction list = predict(examined())[4];
    EXPECT_EQ(std::string("the server refuses to list the directory (") + GetParam().reply + ")", list.reason);
    EXPECT_EQ(GetParam().remedy, list.remedy);
    EXPECT_EQ(list.reason, list.session.reason);
}

constexpr Refusal kRefusals[] = {
    {"550 no permission", "Let the user list that directory, at the server."},
    {"552 over quota", "Free space at the server for that user, or have the quota raised."},
};

INSTANTIATE_TEST_SUITE_P(With, EvidenceOfARefusal, testing::ValuesIn(kRefusals),
                         [](const testing::TestParamInfo<Refusal>& of) { return std::string(of.param.reply, 3); });

TEST_F(Evidence, OfARefusalIsNotPutDownToTheDataConnection)
{
    doctor::ProbeResult result;
    result.made = true;
    result.code = 13;
    result.error = doctor::ServerText("Bad PASV/EPSV response: 550", PasswordMask("", ""));
    const doctor::ServerText said("over quota", PasswordMask("", ""));
    result.transcript = {{"", {doctor::Ending::Complete, 220, {}}},
                         {"PASS", {doctor::Ending::Complete, 230, {}}},
                         {"NLST", {doctor::Ending::Complete, 550, said}},
                         {"PASV", {doctor::Ending::Complete, 227, {}}}};
    doctor::Report report = examined();
    report.client.listing = result;
    const std::vector<doctor::Prediction> predictions = predict(report);
    EXPECT_EQ("the server refuses to list the directory (550 over quota)", predictions[4].reason);
    EXPECT_EQ("WWWWFW", outlooksOf(predictions));
}

} // namespace
