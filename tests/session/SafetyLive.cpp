// What a session does not do: log in without TLS, trust anybody, obey control bytes, hang.
#include "SessionLive.h"

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <memory>
#include <thread>

namespace {

class SessionSafety : public SessionLive
{
protected:
    static SessionOptions with(std::chrono::milliseconds limit, std::chrono::milliseconds SessionOptions::*field)
    {
        SessionOptions options;
        options.*field = limit;
        return options;
    }
};

std::string withPassphrase(const std::string& keyPem)
{
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> in(BIO_new_mem_buf(keyPem.data(), -1), BIO_free_all);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> out(BIO_new(BIO_s_mem()), BIO_free_all);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(in.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    PEM_write_bio_PKCS8PrivateKey(out.get(), key.get(), EVP_aes_256_cbc(), "passphrase", 10, nullptr, nullptr);
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(out.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

bool says(const Lines& lines, const std::string& beginning)
{
    for (const std::string& line : lines) {
        if (line.compare(0, beginning.size(), beginning) == 0) {
            return true;
        }
    }
    return false;
}

} // namespace

TEST_F(SessionSafety, WithoutTlsThereIsNoLogin)
{
    config.tls = testserver::TlsMode::Plain;
    config.tlsRequiredAtLogin = false;
    serve();
    aimAt("/");
    {
        SFtpSession session;
        EXPECT_EQ(CURLE_USE_SSL_FAILED, session.TestSConnect(request, errorText));
    }
    // libcurl asks by an older name as well.
    EXPECT_TRUE(sameLines(greeting() + Lines{"> AUTH TLS", "< 502 no TLS here", "> AUTH SSL", "< 502 no TLS here"},
                          sessions().at(0)));
    SessionOptions options;
    options.requireTls = false;
    SFtpSession allowed(options);
    EXPECT_EQ(0, allowed.TestSConnect(request, errorText)) << errorText;
}

TEST_F(SessionSafety, HostNameAndAuthorityAreCompared)
{
    testserver::CertificateOptions elsewhere;
    elsewhere.dnsNames = {"elsewhere.example.com"};
    elsewhere.addresses = {};
    config.certificate = authority.issue(elsewhere);
    serve();
    aimAt("/");
    {
        SFtpSession session;
        EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, session.TestSConnect(request, errorText));
        SessionOptions options;
        options.compareHostName = false;
        SFtpSession careless(options);
        EXPECT_EQ(0, careless.TestSConnect(request, errorText)) << errorText;
        // The connection that is kept was made for another CA.
        request.caCert = testserver::CertificateAuthority("Another CA").certificatePem();
        EXPECT_EQ(CURLE_PEER_FAILED_VERIFICATION, careless.TestSConnect(request, errorText));
        request.caCert += authority.certificatePem();
        EXPECT_EQ(0, careless.TestSConnect(request, errorText)) << errorText;
        request.caCert = "no certificate";
        EXPECT_EQ(CURLE_SSL_CACERT_BADFILE, careless.TestSConnect(request, errorText));
    }
    for (const Lines& each : sessions()) {
        EXPECT_TRUE(says(each, "= TLS on control") || !says(each, "> USER"));
    }
}

// As with libcurl: a host may trust its one server, and no authority.
TEST_F(SessionSafety, ACertificateNeedNotBeItsOwnIssuerToBeTrusted)
{
    config.certificate = authority.issue();
    serve();
    aimAt("/");
    request.caCert = config.certificate.certificatePem;
    SFtpSession session;
    EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
}

TEST_F(SessionSafety, AClientsKeyWithAPassphraseIsRefused)
{
    serve();
    aimAt("/");
    const testserver::Certificate client = authority.issue();
    SessionOptions options;
    options.clientCertificate = client.certificatePem;
    options.clientKey = client.privateKeyPem;
    EXPECT_EQ(0, SFtpSession(options).TestSConnect(request, errorText)) << errorText;
    options.clientKey = withPassphrase(client.privateKeyPem);
    ASSERT_EQ(0U, options.clientKey.find("-----BEGIN ENCRYPTED"));
    EXPECT_EQ(CURLE_SSL_CERTPROBLEM, SFtpSession(options).TestSConnect(request, errorText)) << errorText;
}

TEST_F(SessionSafety, BadInputIsNamedAndNothingIsSent)
{
    serve();
    const SFtpRequest good = request;
    struct Case
    {
        const char* name;
        void (*spoil)(SFtpRequest&);
        int code;
        const char* field;
    };
    const Case cases[] = {
        {"no URL", [](SFtpRequest& each) { each.remotePath = "ftp://"; }, CURLE_URL_MALFORMAT, "remotePath"},
        {"another scheme", [](SFtpRequest& each) { each.remotePath = "http://host/"; }, CURLE_UNSUPPORTED_PROTOCOL,
         "remotePath"},
        {"port", [](SFtpRequest& each) { each.port = 65536; }, CURLE_URL_MALFORMAT, "port"},
        {"line break in the URL", [](SFtpRequest& each) { each.remotePath += "%0d%0aDELE a"; },
         CURLE_BAD_FUNCTION_ARGUMENT, "remotePath"},
        {"line break in the user", [](SFtpRequest& each) { each.userName += "\r\nDELE a"; },
         CURLE_BAD_FUNCTION_ARGUMENT, "userName"},
        {"line break in the password", [](SFtpRequest& each) { each.password += "\n"; }, CURLE_BAD_FUNCTION_ARGUMENT,
         "password"},
        {"line break in the name", [](SFtpRequest& each) { each.remoteFileName = "a\nDELE b"; },
         CURLE_BAD_FUNCTION_ARGUMENT, "remoteFileName"},
        {"length of the path", [](SFtpRequest& each) { each.remotePath += std::string(7996, 'x'); },
         CURLE_BAD_FUNCTION_ARGUMENT, "remotePath is longer than 8000 bytes"},
        {"length of the name", [](SFtpRequest& each) { each.remoteFileName = std::string(8001, 'x'); },
         CURLE_BAD_FUNCTION_ARGUMENT, "remoteFileName is longer than 8000 bytes"},
    };
    SFtpSession session;
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        aimAt("/a.bak");
        request.userName = good.userName;
        request.password = good.password;
        request.remoteFileName = "a";
        request.port = good.port;
        each.spoil(request);
        EXPECT_EQ(each.code, session.DelSFtpFile(request, errorText));
        EXPECT_NE(std::string::npos, errorText.find(each.field)) << errorText;
        request = good;
    }
    aimAt("/");
    request.remoteFileName = "a";
    request.localPath = std::string(8001, 'x');
    EXPECT_EQ(CURLE_BAD_FUNCTION_ARGUMENT, session.ReNameSFtpFile(request, errorText));
    EXPECT_NE(std::string::npos, errorText.find("localPath is longer than 8000 bytes")) << errorText;
    EXPECT_TRUE(sessions().empty());
}

// The server's to judge.
TEST_F(SessionSafety, NamesMayBeAsLongAsACommandCanHold)
{
    serve();
    aimAt("/" + std::string(7998, 'x') + "/");
    SFtpSession session;
    EXPECT_EQ(CURLE_REMOTE_FILE_NOT_FOUND, session.TestSConnect(request, errorText)) << errorText;
    aimAt("/");
    request.remoteFileName = request.localPath = std::string(8000, 'x');
    EXPECT_EQ(CURLE_QUOTE_ERROR, session.ReNameSFtpFile(request, errorText)) << errorText;
}

TEST_F(SessionSafety, ANewNameCannotBringACommandAlong)
{
    serve();
    writeFile(served("a"), "content");
    writeFile(served("victim"), "kept");
    aimAt("/");
    request.remoteFileName = "a";
    request.localPath = "b\r\nDELE victim";
    {
        SFtpSession session;
        EXPECT_EQ(CURLE_BAD_FUNCTION_ARGUMENT, session.ReNameSFtpFile(request, errorText));
    }
    EXPECT_NE(std::string::npos, errorText.find("localPath holds a control byte")) << errorText;
    EXPECT_EQ("content", contentOf(served("a")));
    EXPECT_EQ("kept", contentOf(served("victim")));
    EXPECT_TRUE(sessions().empty());
}

// To the system it ends the name, in front of which another file is.
TEST_F(SessionSafety, AZeroByteInALocalPathDoesNotReachAnotherFile)
{
    serve();
    writeFile(served("a.bak"), "content");
    writeFile(local(".a"), "precious");
    aimAt("/a.bak");
    request.localPath = local("a") + '\0' + "b";
    SessionOptions options;
    options.resume = true;
    SFtpSession session(options);
    for (const auto operation : {&SFtpSession::DownLoadSFtpFile, &SFtpSession::Listsftpdir,
                                 &SFtpSession::UploadFileToSFtpServer, &SFtpSession::ReNameSFtpFile}) {
        EXPECT_EQ(CURLE_BAD_FUNCTION_ARGUMENT, (session.*operation)(request, errorText));
        EXPECT_NE(std::string::npos, errorText.find("localPath holds a ")) << errorText;
    }
    EXPECT_EQ("precious", contentOf(local(".a")));
    EXPECT_FALSE(exists(local("a")));
    EXPECT_TRUE(sessions().empty());
}

TEST_F(SessionSafety, AProxyOfTheEnvironmentIsNotTaken)
{
    serve();
    aimAt("/");
    setenv("all_proxy", "http://127.0.0.1:1", 1);
    setenv("ftp_proxy", "http://127.0.0.1:1", 1);
    SFtpSession session;
    EXPECT_EQ(0, session.TestSConnect(request, errorText)) << errorText;
    unsetenv("all_proxy");
    unsetenv("ftp_proxy");
}

TEST_F(SessionSafety, CancelEndsACallInEveryPhase)
{
    for (const std::string fault : {"GREETING=stall", "AUTH=stall", "TLS=stall", "PASS=stall", "EPSV=stall",
                                    "RETR=stall", "DATA=stall", "DATA=stall-after:3", "DONE=stall"}) {
        SCOPED_TRACE(fault);
        config.faults.clear();
        misbehave(fault);
        serve();
        writeFile(served("a.bak"), "content");
        writeFile(request.localPath, "before");
        aimAt("/a.bak");
        SFtpSession session;
        std::thread cancelling([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            session.Cancel();
        });
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.DownLoadSFtpFile(request, errorText)) << errorText;
        const auto took = std::chrono::steady_clock::now() - begin;
        cancelling.join();
        EXPECT_LT(took, std::chrono::milliseconds(150 + 1000)) << "generous, for slow machines";
        EXPECT_EQ("before", contentOf(request.localPath));
        EXPECT_EQ(CURLE_ABORTED_BY_CALLBACK, session.TestSConnect(request, errorText)) << "and what comes later";
        session.ClearCancel();
        stopServing();
    }
}

TEST_F(SessionSafety, LimitsEndACall)
{
    struct Case
    {
        const char* fault;
        std::chrono::milliseconds SessionOptions::*field;
        const char* says;
    };
    const Case cases[] = {
        {"GREETING=stall", &SessionOptions::connectTimeout, ""},
        {"RETR=stall", &SessionOptions::replyTimeout, ""},
        {"DONE=stall", &SessionOptions::replyTimeout, ""},
        {"DATA=stall-after:3", &SessionOptions::stallTimeout, "stallTimeout"},
        {"DATA=stall-after:3", &SessionOptions::callTimeout, ""},
        {"PASS=stall", &SessionOptions::callTimeout, ""},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.fault);
        config.faults.clear();
        misbehave(each.fault);
        serve();
        writeFile(served("a.bak"), "content");
        aimAt("/a.bak");
        SFtpSession session(with(std::chrono::milliseconds(300), each.field));
        EXPECT_EQ(CURLE_OPERATION_TIMEDOUT, session.DownLoadSFtpFile(request, errorText)) << errorText;
        EXPECT_NE(std::string::npos, errorText.find(each.says)) << errorText;
        stopServing();
    }
}

TEST_F(SessionSafety, ADeadKeptConnectionIsMadeAnew)
{
    for (const std::string fault :
         {"1/CWD#2=drop", "1/CWD#2=last:421 idle for too long", "1/NOOP#1=last:200 and that is all",
          "1/NOOP#1=last:200 here\r\n421 idle for too long", "1/NOOP#2=last:421 idle for too long",
          "1/NOOP#2=last:421-idle\\r\\n421 for too long"}) {
        SCOPED_TRACE(fault);
        config.faults.clear();
        misbehave(fault);
        serve();
        std::filesystem::create_directory(served("a"));
        std::filesystem::create_directory(served("b"));
        SFtpSession session;
        for (const char* const path : {"/a/", "/a/", "/b/", "/a/"}) {
            aimAt(path);
            EXPECT_EQ(0, session.TestSConnect(request, errorText)) << path << errorText;
        }
        stopServing();
    }
}
