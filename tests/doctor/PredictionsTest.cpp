// From facts to predictions, without a server.
#include "doctor/Predictions.h"

#include "harness/Examined.h"

#include <ostream>

namespace {

using doctor::Ending;
using doctor::Exchange;
using doctor::Outlook;
using doctor::Prediction;
using doctor::ProbeResult;
using doctor::Reply;
using doctor::Report;
using doctor::Scheme;
using doctor::Step;

doctor::ServerText said(const std::string& text) { return {text, PasswordMask("", "")}; }

Reply reply(int code, const std::string& text = "text") { return {Ending::Complete, code, said(text)}; }

ProbeResult resultWith(int code, const std::vector<Exchange>& transcript)
{
    ProbeResult visit;
    visit.made = true;
    visit.code = code;
    visit.error = said("libcurl's words");
    visit.entryPath = said("/");
    visit.transcript = transcript;
    return visit;
}

std::vector<Exchange> transcriptUpTo(const std::vector<Exchange>& last)
{
    std::vector<Exchange> transcript = {{"", reply(220)},
                                        {"USER backup", reply(331)},
                                        {"PASS", reply(230)},
                                        {"PWD", reply(257)},
                                        {"CWD weekly", reply(250)}};
    transcript.insert(transcript.end(), last.begin(), last.end());
    return transcript;
}

ProbeResult listed(const std::string& verb) { return resultWith(0, transcriptUpTo({{verb, reply(226)}})); }

/// A server where everything works, over explicit TLS and with a login in the clear.
Report fine()
{
    Report report;
    report.scheme = Scheme::Ftp;
    report.url = "ftp://host:21/weekly/";
    report.host = "host";
    report.port = 21;
    report.clearLogin = true;
    report.commandDirectory = "/weekly/";
    report.libcurl.number = 0x075801;
    report.contact.addresses = {"192.0.2.1"};
    report.contact.address = "192.0.2.1";
    report.contact.greeting = reply(220);
    report.tls.auth = reply(234);
    report.tls.versions[0].ending = Ending::Complete;
    report.tls.versions[0].offered = true;
    report.tls.namesHost = true;
    report.client.test = resultWith(0, transcriptUpTo({{"EPSV", reply(229)}, {"LIST", reply(226)}}));
    report.client.commands = resultWith(0, transcriptUpTo({{"DELE x", reply(550)},
                                                           {"RNFR x", reply(550)},
                                                           {"rename /weekly/x /weekly/y", reply(550)},
                                                           {"rm /weekly/x", reply(550)}}));
    report.client.listing = listed("NLST");
    report.bare = listed("NLST");
    report.bareCommands = resultWith(0, transcriptUpTo({{"SIZE x", reply(550)}}));
    return report;
}

Report fineWithUserAlone(const Reply& toUser)
{
    Report report = fine();
    report.clearLogin = false;
    report.bare = {};
    report.clearUser = toUser;
    return report;
}

/// A change to the good server, and the outlooks that follow: download, upload, rename, delete, list, test.
struct Change
{
    const char* id;
    const char* outlooks;
    std::vector<int> codes; ///< 99: none is reported
    Report report;
};

void PrintTo(const Change& change, std::ostream* stream) { *stream << change.id; }

template <typename Edit>
Report changed(Edit edit)
{
    Report report = fine();
    edit(report);
    return report;
}

void answerVerbs(Report& report, const Reply& each)
{
    std::vector<Exchange>& transcript = report.client.commands.transcript;
    transcript[transcript.size() - 2].reply = each;
    transcript.back().reply = each;
}

const std::vector<Change>& changes()
{
    constexpr int kNone = 99;
    static const std::vector<Change> all = {
        {"None", "WWWWWW", {0, 0, 0, 0, 0, 0}, fine()},
        {"UserAloneGoesOn", "??WWWW", {kNone, kNone, 0, 0, 0, 0}, fineWithUserAlone(reply(331))},
        {"UserAloneIs530", "FFWWWW", {-1, 67, 0, 0, 0, 0}, fineWithUserAlone(reply(530))},
        {"UserAloneIs421", "FFWWWW", {-1, 28, 0, 0, 0, 0}, fineWithUserAlone(reply(421))},
        {"UserAloneIsDropped", "FFWWWW", {-1, 56, 0, 0, 0, 0}, fineWithUserAlone({Ending::Closed, 0, {}})},
        {"UserAloneIsNotAnswered", "FFWWWW", {-1, 28, 0, 0, 0, 0}, fineWithUserAlone({Ending::Silent, 0, {}})},
        {"UserAloneButNotTrusted",
         "FFFFFF",
         {-1, 67, 60, 60, 60, 60},
         [] {
             Report report = fineWithUserAlone(reply(530));
             report.client.test = resultWith(60, {});
             report.client.listing = {};
             return report;
         }()},
        {"UserAloneGoesOnButNotTrusted",
         "F?FFFF",
         {60, kNone, 60, 60, 60, 60},
         [] {
             Report report = fineWithUserAlone(reply(331));
             report.client.test = resultWith(60, {});
             report.client.listing = {};
             return report;
         }()},
        {"NameUnknown", "FFFFFF", {-1, 6, 6, 6, 6, 6}, changed([](Report& r) {
             r = Report();
             r.commandDirectory = "/";
             r.contact.code = 6;
         })},
        {"ConnectingTimesOut", "FFFFFF", {-1, 28, 28, 28, 28, 28}, changed([](Report& r) {
             r = Report();
             r.commandDirectory = "/";
             r.contact.code = 28;
         })},
        {"SilentGreeting", "FFFFFF", {-1, 28, 28, 28, 28, 28}, changed([](Report& r) {
             r = Report();
             r.commandDirectory = "/";
             r.contact.greeting.ending = Ending::Silent;
         })},
        {"SilentHandshake", "FWFFFF", {28, 0, 28, 28, 28, 28}, changed([](Report& r) {
             r.tls.versions[0] = {"TLS 1.3", Ending::Silent, false, ""};
             r.client.test = {};
             r.client.listing = {};
         })},
        {"ClearDataRefused", "WFWWWW", {0, 25, 0, 0, 0, 0}, changed([](Report& r) {
             r.bare = resultWith(19, transcriptUpTo({{"NLST", reply(522)}}));
             r.bareAgain = resultWith(19, transcriptUpTo({{"LIST", reply(522)}}));
         })},
        {"EveryListingRefused", "??FFFF", {kNone, kNone, 19, 19, 19, 19}, changed([](Report& r) {
             r.client.test = resultWith(19, transcriptUpTo({{"LIST", reply(550)}}));
             r.client.listing = r.bare = r.bareAgain = resultWith(19, transcriptUpTo({{"NLST", reply(550)}}));
         })},
        {"SizeIs502", "FWWWWW", {-1, 0, 0, 0, 0, 0}, changed([](Report& r) {
             r.bareCommands.transcript.back().reply = reply(502);
         })},
        {"SizeIs213", "WWWWWW", {0, 0, 0, 0, 0, 0}, changed([](Report& r) {
             r.bareCommands.transcript.back().reply = reply(213);
         })},
        {"SizeNotAnswered", "?WWWWW", {kNone, 0, 0, 0, 0, 0}, changed([](Report& r) {
             r.bareCommands.transcript.back().reply = {};
         })},
        {"VerbsAre500", "WWFFWW", {0, 0, 21, 21, 0, 0}, changed([](Report& r) { answerVerbs(r, reply(500)); })},
        {"VerbsAre501", "WWFFWW", {0, 0, 21, 21, 0, 0}, changed([](Report& r) { answerVerbs(r, reply(501)); })},
        {"VerbsAre450", "WWWWWW", {0, 0, 0, 0, 0, 0}, changed([](Report& r) { answerVerbs(r, reply(450)); })},
        {"VerbsAre553", "WWWWWW", {0, 0, 0, 0, 0, 0}, changed([](Report& r) { answerVerbs(r, reply(553)); })},
        {"VerbsAre202", "WW??WW", {0, 0, kNone, kNone, 0, 0}, changed([](Report& r) { answerVerbs(r, reply(202)); })},
        {"VerbsNotAnswered", "WW??WW", {0, 0, kNone, kNone, 0, 0}, changed([](Report& r) { answerVerbs(r, {}); })},
        {"DirectoryForNoCommand", "WW??WW", {0, 0, kNone, kNone, 0, 0}, changed([](Report& r) {
             r.commandDirectory.clear();
         })},
        {"LoginLeadsElsewhere", "WWFFWW", {0, 0, 21, 21, 0, 0}, changed([](Report& r) {
             r.client.test.entryPath = said("/home");
         })},
        {"LoginLeadsElsewhereButAbsolute", "WWWWWW", {0, 0, 0, 0, 0, 0}, changed([](Report& r) {
             r.client.test.entryPath = said("/home");
             r.commandDirectory = "//home/weekly/";
         })},
        {"UnknownScheme", "FFFFFF", {-1, 1, 1, 1, 1, 1}, changed([](Report& r) {
             r.scheme = Scheme::Sftp;
             r.libcurl.speaksScheme = false;
             r.client.test = resultWith(1, {});
             r.client.listing = r.bare = {};
         })},
    };
    return all;
}

class Predictions : public testing::TestWithParam<Change>
{
};

TEST_P(Predictions, FollowFromTheFacts)
{
    const std::vector<Prediction> predictions = predict(GetParam().report);
    EXPECT_EQ(GetParam().outlooks, outlooksOf(predictions));
    ASSERT_EQ(GetParam().codes.size(), predictions.size());
    for (std::size_t i = 0; i < predictions.size(); ++i) {
        EXPECT_EQ(GetParam().codes[i], predictions[i].code.value_or(99)) << predictions[i].operation;
        if (predictions[i].outlook != Outlook::Works) {
            EXPECT_NE("", predictions[i].reason) << predictions[i].operation;
            EXPECT_NE("", predictions[i].remedy) << predictions[i].operation;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(When, Predictions, testing::ValuesIn(changes()),
                         [](const testing::TestParamInfo<Change>& of) { return std::string(of.param.id); });

struct Loss
{
    Scheme scheme;
    unsigned int libcurl;
    bool tls13;
    bool cautioned;
};

TEST(PredictionsOfUploads, WarnOnlyIfTheEndCanBeLost)
{
    const Loss cases[] = {{Scheme::Ftps, 0x075801, true, true},
                          {Scheme::Ftps, 0x080e00, true, true},
                          {Scheme::Ftps, 0x080e01, true, false},
                          {Scheme::Ftps, 0x075801, false, false},
                          {Scheme::Ftp, 0x075801, true, false}};
    for (const Loss& each : cases) {
        Report report = fine();
        report.scheme = each.scheme;
        report.libcurl.number = each.libcurl;
        report.tls.versions[0].offered = each.tls13;
        const Prediction upload = predict(report)[1];
        EXPECT_EQ(Outlook::Works, upload.outlook);
        EXPECT_EQ(each.cautioned, !upload.remedy.empty()) << each.libcurl << " " << each.tls13;
    }
}

TEST(PredictionsAfterARoundTrip, MatchWhatItShowed)
{
    Report report = fine();
    answerVerbs(report, reply(202));
    doctor::RoundTrip& trip = report.roundTrip.emplace();
    trip[Step::Put].code = 25;
    trip[Step::List].code = 0;
    trip[Step::Rename].code = 0;
    trip[Step::Remove].code = 21;
    const std::vector<Prediction> predictions = predict(report);
    EXPECT_EQ("WFWFWW", outlooksOf(predictions));
    EXPECT_EQ(25, predictions[1].code);
    EXPECT_NE("", predictions[1].remedy);
    EXPECT_EQ("", predictions[2].reason);
}

TEST(PredictionsAfterARoundTrip, ConfirmNoStepThatDidNotFinish)
{
    const std::pair<doctor::Step, std::size_t> steps[] = {{doctor::Step::Get, 0},
                                                          {doctor::Step::Put, 1},
                                                          {doctor::Step::Rename, 2},
                                                          {doctor::Step::Remove, 3},
                                                          {doctor::Step::List, 4}};
    for (const auto& [step, place] : steps) {
        Report report = fine();
        report.roundTrip.emplace().unfinished = step;
        report.roundTrip->failure = "did not finish within 60 seconds";
        const std::vector<Prediction> predictions = predict(report);
        std::string expected = "WWWWWW";
        expected[place] = '?';
        EXPECT_EQ(expected, outlooksOf(predictions));
        EXPECT_EQ(std::nullopt, predictions[place].code);
        EXPECT_EQ("tried, and it did not finish within 60 seconds", predictions[place].reason);
        EXPECT_EQ("Try that operation alone, with --trace, and look at the server and at any firewall before it.",
                  predictions[place].remedy);
        EXPECT_EQ(3, exitStatusOf(predictions));
    }
}

TEST(PredictionsAfterARoundTrip, BlameNoServerForAnInterruption)
{
    Report report = fine();
    report.roundTrip.emplace().unfinished = doctor::Step::Put;
    report.roundTrip->failure = doctor::kInterrupted;
    const Prediction upload = predict(report).at(1);
    EXPECT_EQ("upload", upload.operation);
    EXPECT_EQ("tried, and it was interrupted", upload.reason);
    EXPECT_EQ("Run doctor again.", upload.remedy);
}

TEST(PredictionsAfterARoundTrip, KeepAFailureOfAStepThatDidNotFinish)
{
    Report report = fine();
    answerVerbs(report, reply(500));
    report.roundTrip.emplace().unfinished = doctor::Step::Rename;
    report.roundTrip->failure = "did not finish within 60 seconds";
    const Prediction rename = predict(report)[2];
    EXPECT_EQ(Outlook::Fails, rename.outlook);
    EXPECT_EQ(21, rename.code);
    EXPECT_EQ(
        "tried, and it did not finish within 60 seconds; the server does not know the command \"rename\" (500 text)",
        rename.reason);
}

TEST(PredictionsAfterARoundTrip, KeepAReasonThatWasPredicted)
{
    Report report = fine();
    answerVerbs(report, reply(500));
    report.roundTrip.emplace()[Step::Rename].code = 21;
    const Prediction rename = predict(report)[2];
    EXPECT_EQ("the server does not know the command \"rename\" (500 text)", rename.reason);
}

TEST(PredictionsAfterARoundTrip, DetectAnUnreportedLoss)
{
    Report report = fine();
    doctor::RoundTrip& trip = report.roundTrip.emplace();
    trip[Step::Put].code = trip[Step::Get].code = 0;
    trip[Step::Get].isGood = false;
    EXPECT_EQ("WFWWWW", outlooksOf(predict(report)));
    trip[Step::Get].isGood = true;
    EXPECT_EQ("WWWWWW", outlooksOf(predict(report)));
}

TEST(ExitStatus, ReportsTheWorstVerdict)
{
    const auto statusOf = [](const std::vector<Outlook>& outlooks) {
        std::vector<Prediction> predictions;
        for (const Outlook each : outlooks) {
            predictions.emplace_back();
            predictions.back().outlook = each;
        }
        return exitStatusOf(predictions);
    };
    EXPECT_EQ(0, statusOf({Outlook::Works, Outlook::Works}));
    EXPECT_EQ(1, statusOf({Outlook::Unknown, Outlook::Fails, Outlook::Works}));
    EXPECT_EQ(3, statusOf({Outlook::Unknown, Outlook::Works}));
}

} // namespace
