// The doctor against Debian's file servers.
#include "RealServer.h"
#include "doctor/CleanUp.h"
#include "doctor/RoundTrip.h"
#include "harness/Examined.h"
#include "harness/Golden.h"
#include "harness/Truth.h"

#include <algorithm>
#include <iterator>

namespace {

class Daemons : public RealServer
{
protected:
    doctor::Question ask()
    {
        keep("weekly/seen.bak", "");
        aimAt("weekly/");
        doctor::Question question;
        question.request = request;
        question.commandUrl = request.remotePath;
        question.clearLogin = true;
        return question;
    }
};

TEST_P(Daemons, BehaveAsPredicted)
{
    const doctor::Question question = ask();
    const std::vector<doctor::Prediction> predictions = predict(examine(question));
    expectTruth(predictions,
                truthOf(question, local("scratch"),
                        [this](const std::string& name, const std::string& text) { keep("weekly/" + name, text); }));
}

TEST_P(Daemons, BehaveAsPredictedForASession)
{
    doctor::Question question = ask();
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
    const doctor::Question question = ask();
    doctor::Report report = examine(question);
    doctor::RoundTrip& roundTrip = report.roundTrip.emplace();
    roundTrip.name = doctor::uniqueName();
    makeRoundTrip(question, roundTrip.name, [&roundTrip](const doctor::StepNews& each) { record(each, roundTrip); });
    EXPECT_EQ(server.expected.upload, roundTrip.put);
    EXPECT_EQ(server.expected.list, roundTrip.list);
    // Including a round trip that ends right after the upload.
    keep("weekly/" + doctor::renamed(roundTrip.name), "");
    cleanUp(question, report, roundTrip);
    EXPECT_FALSE(exists(served("weekly/" + roundTrip.name)));
    EXPECT_FALSE(exists(served("weekly/" + doctor::renamed(roundTrip.name))));
    EXPECT_TRUE(exists(served("weekly/seen.bak")));
    EXPECT_TRUE(roundTrip.leftBehind.empty());
    EXPECT_FALSE(roundTrip.leftUnknown);
}

TEST_P(Daemons, HaveATable) { expectGolden(server.id, normalisedTable(examine(ask()))); }

std::vector<Server> thoseWithSsh()
{
    std::vector<Server> those;
    std::copy_if(servers().begin(), servers().end(), std::back_inserter(those),
                 [](const Server& each) { return each.scheme == "sftp"; });
    return those;
}

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

INSTANTIATE_TEST_SUITE_P(OfDebian, SshDaemons, testing::ValuesIn(thoseWithSsh()), idOf);
INSTANTIATE_TEST_SUITE_P(OfDebian, Daemons, testing::ValuesIn(servers()), idOf);

} // namespace
