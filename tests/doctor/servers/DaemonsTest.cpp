// The doctor against Debian's file servers.
#include "servers/Daemons.h"
#include "doctor/Findings.h"
#include "doctor/Predictions.h"
#include "doctor/RoundTrip.h"
#include "harness/Examined.h"
#include "harness/Golden.h"
#include "harness/Truth.h"

#include <filesystem>
#include <iterator>

namespace {

TEST_P(Daemons, BehaveAsPredicted)
{
    const doctor::Question question = ask();
    const std::vector<doctor::Prediction> predictions = predict(examine(question));
    expectTruth(predictions, truthOf(question, local("scratch"),
                                     [this](const std::string& name, const std::string& text) { fill(name, text); }));
}

TEST_P(Daemons, BehaveAsPredictedForASession)
{
    doctor::Question question = ask();
    question.clearLogin = false;
    const auto fill = [this](const std::string& name, const std::string& text) { keep("weekly/" + name, text); };
    const doctor::Report report = examine(question);
    expectTruth(ofSession(predict(report)), truthOfSession(question, local("scratch"), fill));
    if (!report.hostKey.fingerprint.empty()) {
        question.hostKeySha256 = report.hostKey.fingerprint;
        const std::vector<doctor::Prediction> known = ofSession(predict(examine(question)));
        EXPECT_EQ("WWWWWW", outlooksOf(known));
        expectTruth(known, truthOfSession(question, local("scratch"), fill));
    }
}

TEST_P(Daemons, AreKnownToRequireTlsFromTheUserCommandAlone)
{
    doctor::Question question = ask();
    question.clearLogin = false;
    const doctor::Prediction upload = predict(examine(question))[1];
    const bool refused = server.expected.upload != 0;
    const bool inTheClear = server.scheme == "ftp";
    EXPECT_EQ(refused      ? doctor::Outlook::Fails
              : inTheClear ? doctor::Outlook::Unknown
                           : doctor::Outlook::Works,
              upload.outlook)
        << upload.reason;
    if (refused) {
        EXPECT_EQ(server.expected.upload, upload.code);
    }
}

TEST_P(Daemons, AreLeftAsTheyWere)
{
    doctor::Question question = ask();
    question.fileName = doctor::uniqueName();
    // As if a round trip had ended right after the renaming.
    keep("weekly/" + doctor::renamed(question.fileName), "");
    const doctor::Report report = examine(question);
    ASSERT_TRUE(report.roundTrip.has_value());
    if (server.expected.upload == 0) {
        EXPECT_EQ(0, (*report.roundTrip)[doctor::Step::Put].code);
        EXPECT_EQ(server.expected.list == 0, (*report.roundTrip)[doctor::Step::List].code == 0);
        EXPECT_FALSE(exists(served("weekly/" + doctor::renamed(question.fileName))));
    } else {
        EXPECT_EQ(std::nullopt, (*report.roundTrip)[doctor::Step::Put].code);
        std::filesystem::remove(served("weekly/" + doctor::renamed(question.fileName)));
    }
    EXPECT_TRUE(exists(served("weekly/seen.bak")));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("weekly")), {}));
    EXPECT_TRUE(report.roundTrip->leftBehind.empty());
    EXPECT_FALSE(report.roundTrip->leftUnknown);
}

TEST_P(Daemons, BehaveAsARoundTripShows)
{
    doctor::Question question = ask();
    question.hostKeySha256 = examine(question).hostKey.fingerprint;
    question.fileName = doctor::uniqueName();
    const unsigned before = connections();
    const doctor::Report report = examine(question);
    EXPECT_GE(8U, connections() - before);
    EXPECT_EQ(predictForSession(report, "upload").outlook == doctor::Outlook::Works, report.sessionTrip.has_value());
    const std::vector<doctor::Prediction> predictions = predict(report);
    const auto fill = [this](const std::string& name, const std::string& text) { keep("weekly/" + name, text); };
    EXPECT_TRUE(std::filesystem::exists(served("weekly/seen.bak")));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("weekly")), {}));
    expectTruth(predictions, truthOf(question, local("scratch"), fill));
    std::filesystem::remove(served("weekly/new.bak")); // some servers do not rename over a file
    expectTruth(ofSession(predictions), truthOfSession(question, local("scratch"), fill));
}

TEST_P(Daemons, HaveATable) { expectGolden(server.id, normalisedTable(examine(ask()))); }

class SshDaemons : public Daemons
{
protected:
    void expectPrediction(const doctor::Question& question, const std::string& outlooks)
    {
        const std::vector<doctor::Prediction> predictions = predict(examine(question));
        EXPECT_EQ(outlooks, outlooksOf(predictions));
        expectTruth(predictions, truthOf(question, local("scratch"), [](const std::string&, const std::string&) {}));
    }
    void expectPredictionOfASession(doctor::Question question, const std::string& outlooks)
    {
        question.hostKeySha256 = examine(question).hostKey.fingerprint;
        const std::vector<doctor::Prediction> predictions = ofSession(predict(examine(question)));
        EXPECT_EQ(outlooks, outlooksOf(predictions));
        expectTruth(predictions,
                    truthOfSession(question, local("scratch"), [](const std::string&, const std::string&) {}));
    }
};

TEST_P(SshDaemons, RefuseAWrongPasswordAsPredicted)
{
    request.password = "wrong";
    expectPrediction(ask(), "FFFFFF");
    expectPredictionOfASession(ask(), "FFFFFF");
}

TEST_P(SshDaemons, ReportAMissingDirectoryAsPredicted)
{
    doctor::Question question = ask();
    question.request.remotePath += "missing/";
    question.commandUrl = question.request.remotePath;
    expectPrediction(question, "FWFFFF");
    question.request.remotePath += "another/";
    question.commandUrl = question.request.remotePath;
    expectPredictionOfASession(question, "FWFFFW");
}

struct Mode
{
    std::filesystem::perms perms;
    const char* client;
    const char* session;
    const char* reason;
};

TEST_P(SshDaemons, KnowPermissionFromAbsence)
{
    const Mode modes[] = {
        {std::filesystem::perms::owner_write | std::filesystem::perms::owner_exec, "WWFFFF", "WWWWFW",
         "the user may not list the directory ("},
        {std::filesystem::perms::none, "FFFFFF", "FFFFFW", "the user may not enter or list the directory ("}};
    for (const Mode& each : modes) {
        SCOPED_TRACE(each.reason);
        doctor::Question question = ask();
        const auto fill = [this](const std::string& name, const std::string& text) { keep("weekly/" + name, text); };
        std::filesystem::permissions(served("weekly"), each.perms);
        const std::vector<doctor::Prediction> predictions = predict(examine(question));
        EXPECT_EQ(each.client, outlooksOf(predictions));
        expectTruth(predictions, truthOf(question, local("scratch"), fill));
        EXPECT_EQ(0U, predictions[4].reason.find(each.reason)) << predictions[4].reason;
        question.hostKeySha256 = examine(question).hostKey.fingerprint;
        const std::vector<doctor::Prediction> known = ofSession(predict(examine(question)));
        EXPECT_EQ(each.session, outlooksOf(known));
        expectTruth(known, truthOfSession(question, local("scratch"), fill));
        EXPECT_EQ(0U, known[4].reason.find(each.reason)) << known[4].reason;
        std::filesystem::permissions(served("weekly"), std::filesystem::perms::owner_all);
    }
}

class LimitedDaemons : public Daemons
{
};

TEST_P(LimitedDaemons, AreExaminedAndTheirLimitIsNamed)
{
    doctor::Question question = ask();
    question.fileName = doctor::uniqueName();
    const doctor::Report report = examine(question);
    EXPECT_EQ(421, report.limit.code) << report.limit.shown();
    std::string row;
    for (const doctor::Finding& each : findingsOf(report)) {
        row = each.probe == "connections" ? each.seen : row;
    }
    EXPECT_EQ("the server turns away a second one (" + report.limit.shown() +
                  "): it limits the connections of an address; set SessionOptions::maxConnections to 1, and give push "
                  "and pull --jobs 1",
              row);
    const std::vector<doctor::Prediction> predictions = predict(report);
    EXPECT_EQ("WWFFWW", outlooksOf(predictions));
    EXPECT_EQ("WWWWWW", outlooksOf(ofSession(predictions)));
    EXPECT_EQ(0, (*report.roundTrip)[doctor::Step::Put].code);
    EXPECT_EQ(0, (*report.sessionTrip)[doctor::Step::Remove].code);
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(served("weekly")), {}));
}

INSTANTIATE_TEST_SUITE_P(OfDebian, LimitedDaemons, testing::ValuesIn(limitedServers()), idOf);
INSTANTIATE_TEST_SUITE_P(OfDebian, SshDaemons, testing::ValuesIn(sshServers()), idOf);
INSTANTIATE_TEST_SUITE_P(OfDebian, Daemons, testing::ValuesIn(servers()), idOf);

} // namespace
