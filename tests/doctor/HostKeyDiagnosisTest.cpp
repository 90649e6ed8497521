// What follows from an SSH server's key and what a session knows of it, without a server.
#include "doctor/Access.h"
#include "doctor/Findings.h"
#include "doctor/Predictions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace {

using doctor::Grade;

struct Case
{
    const char* id;
    const char* file;
    const char* expected;
    curl_khmatch match;
    int notCompared;

    int code;
    Grade grade;
    const char* row;
    const char* reason;
    const char* remedy;
};

void PrintTo(const Case& one, std::ostream* stream) { *stream << one.id; }

constexpr int kRefused = CURLE_PEER_FAILED_VERIFICATION;
const std::string kLine = "[host]:2222 ssh-ed25519 AAAA";

const std::vector<Case>& cases()
{
    static const std::vector<Case> all = {
        {"ToldNothing", "", "", CURLKHMATCH_MISSING, 0, kRefused, Grade::Warn,
         "a session has nothing to compare it with", "a session is told nothing of the server's host key",
         "If the server's administrator confirms SHA256:seen, give that with --fingerprint "
         "(SessionOptions::hostKeySha256), or put this line at the top of ~/.ssh/known_hosts, or of a file for "
         "--known-hosts (SessionOptions::knownHostsFile): [host]:2222 ssh-ed25519 AAAA"},
        {"Missing", "/it's", "", CURLKHMATCH_MISSING, 0, kRefused, Grade::Warn, "not in /it's",
         "the server's host key is not in /it's",
         "If the server's administrator confirms SHA256:seen, give that with --fingerprint "
         "(SessionOptions::hostKeySha256), or put this line at the top of /it's: [host]:2222 ssh-ed25519 AAAA"},
        {"Changed", "/it's", "", CURLKHMATCH_MISMATCH, 0, kRefused, Grade::Fail, "/it's has another one for the server",
         "/it's has another host key for the server",
         "Somebody may be intercepting the connection: send nothing more until the server's administrator confirms "
         "SHA256:seen; then remove the old key (ssh-keygen -R '[host]:2222' -f '/it'\\''s') and put this line at the "
         "top of /it's: [host]:2222 ssh-ed25519 AAAA"},
        {"OfAnotherType", "/known", "", CURLKHMATCH_MISSING, 2, 2, Grade::Fail,
         "because of /known a session asks for one of another type, in vain",
         "because of /known a session asks for a host key of another type than the server has (no such key)",
         "If the server's administrator confirms SHA256:seen, remove the old key (ssh-keygen -R '[host]:2222' -f "
         "'/known') and put this line at the top of /known: [host]:2222 ssh-ed25519 AAAA"},
        {"OfAnotherTypeThoughExpected", "/known", "SHA256:seen", CURLKHMATCH_MISSING, 2, 2, Grade::Fail,
         "because of /known a session asks for one of another type, in vain; as expected",
         "because of /known a session asks for a host key of another type than the server has (no such key)",
         "If the server's administrator confirms SHA256:seen, remove the old key (ssh-keygen -R '[host]:2222' -f "
         "'/known') and put this line at the top of /known: [host]:2222 ssh-ed25519 AAAA"},
        {"Unexpected", "", "SHA256:other", CURLKHMATCH_MISSING, 0, kRefused, Grade::Fail, "expected is SHA256:other",
         "the server's host key is SHA256:seen, not the expected SHA256:other",
         "Somebody may be intercepting the connection: send nothing more until the server's administrator confirms "
         "SHA256:seen; then give that with --fingerprint (SessionOptions::hostKeySha256)."},
        {"KnownButUnexpected", "/known", "other", CURLKHMATCH_OK, 0, kRefused, Grade::Fail,
         "as in /known; expected is other", "the server's host key is SHA256:seen, not the expected other",
         "Somebody may be intercepting the connection: send nothing more until the server's administrator confirms "
         "SHA256:seen; then give that with --fingerprint (SessionOptions::hostKeySha256)."},
        {"Known", "/known", "", CURLKHMATCH_OK, 0, 0, Grade::Ok, "as in /known", "", ""},
        {"Expected", "", "seen=", CURLKHMATCH_MISSING, 0, 0, Grade::Ok, "as expected", "", ""},
        {"MissingButExpected", "/known", "SHA256:seen", CURLKHMATCH_MISSING, 0, 0, Grade::Ok,
         "not in /known; as expected", "", ""},
    };
    return all;
}

class HostKeyDiagnosis : public testing::TestWithParam<Case>
{
protected:
    HostKeyDiagnosis()
    {
        const Case& given = GetParam();
        report.scheme = doctor::Scheme::Sftp;
        report.trust = doctor::Trust::NotGiven;
        report.commandDirectory = "/weekly/";
        report.client.test.made = report.client.listing.made = true;
        report.knownHostsFile = given.file;
        report.hostKeySha256 = given.expected;
        report.hostKey = {"ssh-ed25519", "SHA256:seen",     kLine,
                          given.match,   given.notCompared, doctor::ServerText("no such key", PasswordMask("", ""))};
    }

    doctor::Report report;
};

TEST_P(HostKeyDiagnosis, TellsWhatASessionWillDo)
{
    const bool mayBeIntercepted =
        std::string(GetParam().remedy).find("Somebody may be intercepting the connection") == 0;
    for (const doctor::Prediction& each : predict(report)) {
        if (mayBeIntercepted) {
            EXPECT_EQ(std::nullopt, each.code);
            EXPECT_EQ(std::string("doctor does not send the password: ") + GetParam().reason, each.reason);
            EXPECT_EQ(GetParam().remedy, each.remedy);
        } else {
            EXPECT_EQ(0, each.code) << "SFtpClient compares nothing";
        }
        EXPECT_EQ(GetParam().code, each.session.code);
        EXPECT_EQ(GetParam().reason, each.session.reason);
        EXPECT_EQ(GetParam().remedy, each.session.remedy);
    }
}

TEST_P(HostKeyDiagnosis, HasARow)
{
    const std::vector<doctor::Finding> findings = findingsOf(report);
    const auto row = std::find_if(findings.begin(), findings.end(),
                                  [](const doctor::Finding& each) { return each.probe == "host key"; });
    ASSERT_NE(findings.end(), row);
    EXPECT_EQ(GetParam().grade, row->grade);
    EXPECT_EQ("ssh-ed25519 SHA256:seen; " + std::string(GetParam().row) + "; SFtpClient does not compare it",
              row->seen);
}

INSTANTIATE_TEST_SUITE_P(Of, HostKeyDiagnosis, testing::ValuesIn(cases()),
                         [](const testing::TestParamInfo<Case>& of) { return std::string(of.param.id); });

TEST(KnownHostsName, HasAPortThatIsNotTheUsualOne)
{
    const auto nameOf = [](const std::string& url, unsigned port) {
        SFtpRequest request;
        request.remotePath = url;
        request.port = port;
        return doctor::Access(request, std::chrono::seconds(1)).knownHostsName();
    };
    EXPECT_EQ("host", nameOf("sftp://host/weekly/", 22));
    EXPECT_EQ("[host]:2222", nameOf("sftp://host:2222/weekly/", 2222));
    EXPECT_EQ("::1", nameOf("sftp://[::1]/", 22));
    EXPECT_EQ("[::1]:2222", nameOf("sftp://[::1]:2222/", 2222));
}

} // namespace
