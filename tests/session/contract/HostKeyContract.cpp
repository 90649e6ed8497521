// How a session judges an SSH server's host key.
#include "OperationCalls.h"
#include "SessionContract.h"

#include <filesystem>

namespace {

const std::string kKey = "abc";
const std::string kFingerprint = "SHA256:ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0";

class SessionHostKey : public SessionContract
{
protected:
    SessionHostKey() { request.remotePath = "sftp://server/backup/"; }

    // What libcurl is told of a key where no file of known hosts was given.
    std::string judged()
    {
        int answer = -1;
        scripted::curl().perform = [&answer](scripted::Handle& handle) {
            const auto judge =
                reinterpret_cast<int (*)(void*, int, const char*, size_t)>(handle.pointer(CURLOPT_SSH_HOSTKEYFUNCTION));
            answer = judge(handle.pointer(CURLOPT_SSH_HOSTKEYDATA), CURLKHTYPE_ED25519, kKey.data(), kKey.size());
            return answer == CURLKHMATCH_OK ? CURLE_OK : CURLE_PEER_FAILED_VERIFICATION;
        };
        test();
        return answer == CURLKHMATCH_OK ? "taken" : answer == CURLKHMATCH_MISMATCH ? "refused" : "?";
    }

    // The same where libcurl has looked for the key in the file.
    std::string judged(curl_khmatch match)
    {
        int answer = -1;
        scripted::curl().perform = [&answer, match](scripted::Handle& handle) {
            using Judge = int (*)(CURL*, const curl_khkey*, const curl_khkey*, curl_khmatch, void*);
            const auto judge = reinterpret_cast<Judge>(handle.pointer(CURLOPT_SSH_KEYFUNCTION));
            const curl_khkey found = {kKey.data(), kKey.size(), CURLKHTYPE_ED25519};
            answer = judge(&handle, nullptr, &found, match, handle.pointer(CURLOPT_SSH_KEYDATA));
            return answer == CURLKHSTAT_FINE ? CURLE_OK : CURLE_PEER_FAILED_VERIFICATION;
        };
        options.knownHostsFile = path("known");
        test();
        return answer == CURLKHSTAT_FINE ? "taken" : answer == CURLKHSTAT_REJECT ? "refused" : "?";
    }

    void expectText(const std::string& found) const
    {
        EXPECT_EQ(scripted::text(CURLE_PEER_FAILED_VERIFICATION) + ": " + found, errorText);
    }

private:
    void test()
    {
        SFtpSession session(options);
        errorText = "as it was";
        result = session.TestSConnect(request, errorText);
    }

protected:
    int result = -1;
    const std::string unknown = "the server's host key is unknown: " + kFingerprint +
                                "; where that is right, set hostKeySha256 to it, or add the host to knownHostsFile";
    const std::string other = "the server's host key is " + kFingerprint + ", hostKeySha256 is another";
};

} // namespace

TEST_F(SessionHostKey, ThatIsUnknownIsRefusedUnlessTheHostSaysSo)
{
    EXPECT_EQ("refused", judged());
    EXPECT_EQ("CURLE_PEER_FAILED_VERIFICATION", nameOf(result));
    expectText(unknown);
    options.acceptUnknownHostKey = true;
    EXPECT_EQ("taken", judged());
    EXPECT_EQ("CURLE_OK", nameOf(result));
    EXPECT_EQ("as it was", errorText);
}

TEST_F(SessionHostKey, MustHaveTheFingerprintThatTheHostKnows)
{
    for (const std::string& same : {kFingerprint, kFingerprint + "=", kFingerprint.substr(7)}) {
        options.hostKeySha256 = same;
        EXPECT_EQ("taken", judged()) << same;
    }
    options.hostKeySha256 = "SHA256:AAAA";
    options.acceptUnknownHostKey = true;
    EXPECT_EQ("refused", judged());
    expectText(other);
}

TEST_F(SessionHostKey, IsComparedWithTheFileOfKnownHosts)
{
    EXPECT_EQ("taken", judged(CURLKHMATCH_OK));
    EXPECT_EQ("refused", judged(CURLKHMATCH_MISSING));
    expectText(unknown);
    for (const bool accepts : {false, true}) {
        options.acceptUnknownHostKey = accepts;
        EXPECT_EQ("refused", judged(CURLKHMATCH_MISMATCH)) << "a changed key is never accepted";
        expectText("the server's host key is " + kFingerprint + ", another one than in knownHostsFile");
    }
    EXPECT_EQ("taken", judged(CURLKHMATCH_MISSING)) << "an unknown one is, where the host says so";
}

TEST_F(SessionHostKey, MustPassBothTheFileAndTheFingerprint)
{
    options.hostKeySha256 = "SHA256:AAAA";
    EXPECT_EQ("refused", judged(CURLKHMATCH_OK));
    expectText(other);
    EXPECT_EQ("refused", judged(CURLKHMATCH_MISSING));
    options.hostKeySha256 = kFingerprint;
    EXPECT_EQ("taken", judged(CURLKHMATCH_OK));
    EXPECT_EQ("taken", judged(CURLKHMATCH_MISSING));
    EXPECT_EQ("refused", judged(CURLKHMATCH_MISMATCH));
}

// libssh2 would not have seen another key for the server there.
TEST_F(SessionHostKey, IsNotTakenForUnknownWhereTheFileCannotBeReadAsAWhole)
{
    options.acceptUnknownHostKey = true;
    const auto expectRefusal = [this](const std::string& obstacle) {
        EXPECT_EQ("refused", judged(CURLKHMATCH_MISSING)) << obstacle;
        expectText("the server's host key, " + kFingerprint + ", may be unknown or another: " + obstacle);
    };
    std::filesystem::create_directory(path("known"));
    expectRefusal("knownHostsFile cannot be read: Is a directory");
    std::filesystem::remove(path("known"));
    std::filesystem::create_symlink("known", path("known"));
    expectRefusal("knownHostsFile cannot be read: Too many levels of symbolic links");
    std::filesystem::remove(path("known"));

    const std::string key = " ssh-ed25519 AAAAC3NzaC1lZDI1NTE5AAAA";
    const std::string longest(254, 'h');
    const std::string salt = "abcdefghijklmnopqrstuvwx+/0=";
    const std::string hashed = "|1|" + salt + "|" + salt;
    const std::string good =
        "# a remark\n\n  server" + key + "\n" + hashed + key + "\n" + longest + "," + longest + key;
    writeFile(path("known"), good);
    EXPECT_EQ("taken", judged(CURLKHMATCH_MISSING));
    for (const std::string& bad :
         {std::string("server"), std::string("server ssh-rsa AAAA"), "h" + longest + key,
          longest + ",h" + longest + key, std::string("\r"), "|2" + hashed.substr(2) + key,
          hashed.substr(0, hashed.size() - 1) + key, hashed + "=" + key, "|1|" + salt + key,
          "|1|" + salt + "=|" + salt + key, "|1|*" + salt.substr(1) + "|" + salt + key, "|1||" + salt + key}) {
        writeFile(path("known"), good + "\n" + bad + "\nserver" + key + "\n");
        expectRefusal("line 6 of knownHostsFile cannot be read, nor can what follows it");
        EXPECT_EQ("taken", judged(CURLKHMATCH_OK)) << "it was found in front of that";
    }
}
