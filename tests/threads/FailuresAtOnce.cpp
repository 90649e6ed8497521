#include "harness/Crowd.h"

#include <LogProxy.h>

#include <array>

namespace {

using testserver::CertificateAuthority;

// Each thread gets its own result, text and records, and no thread's certificate is trusted by another.
class FailuresAtOnce : public Crowd
{
protected:
    struct Outcome
    {
        int result;
        std::string errorText;
        Lines records;
    };

    static Lines difference(const Outcome& expected, const Outcome& found)
    {
        return compare("the result", nameOf(expected.result), nameOf(found.result)) +
               compare("the error text", expected.errorText, found.errorText) +
               problem("the records", sameLines(expected.records, found.records));
    }

    using Operation = int (SFtpClient::*)(const SFtpRequest&, std::string&);

    Outcome call(Operation operation, const SFtpRequest& callsRequest)
    {
        Outcome outcome = {0, "as it was", {}};
        outcome.result = (facade.*operation)(callsRequest, outcome.errorText);
        outcome.records = live::takeRecordsWithIdentifiers();
        return outcome;
    }

    static Lines withIdentifier(unsigned long identifier, Lines records)
    {
        for (std::string& record : records) {
            record.insert(0, std::to_string(identifier) + " ");
        }
        return records;
    }
};

class CertificatesAtOnce : public FailuresAtOnce
{
protected:
    // What one kind of thread does differently, and its outcome.
    struct Kind
    {
        std::string caCert;
        std::string password;
        Lines hookRecords;
        int result;
        std::string errorText;
    };

    Outcome expected(const Kind& kind, unsigned long identifier) const
    {
        const Lines trust = {kind.caCert == "none" ? "0 1 sftpSetCertTmp(): Establish SSL without cert:none"
                                                   : "0 1 sftpSetCertTmp(): Establish SSL with cert"};
        const std::string text = "4 CurlSFtpResponse::GetErrString(): Get error string: " + kind.errorText;
        const Lines end =
            kind.result == CURLE_OK
                ? Lines{"2 CurlSFtpResponse::Listsftpdir(): Listsftpdir():end "}
                : Lines{"4 CurlSFtpResponse::Listsftpdir(): Listsftpdir() list dir failed.code:" +
                            std::to_string(kind.result),
                        text, text,
                        "4 SFtpClient::Listsftpdir(): Listsftpdir():Send SFtp request occur network error. Error  is " +
                            kind.errorText};
        return {kind.result, kind.result == CURLE_OK ? "as it was" : kind.errorText,
                trust + withIdentifier(identifier, kind.hookRecords + end)};
    }

    std::array<Kind, 5> kinds() const
    {
        const std::string ca = authority.certificatePem();
        return {
            {{ca, config.password, {}, CURLE_OK, ""},
             {CertificateAuthority("Another CA").certificatePem(),
              config.password,
              {},
              CURLE_PEER_FAILED_VERIFICATION,
              "SSL peer certificate or SSH remote key was not OK"},
             {"no certificate",
              config.password,
              {"1 sftpConvToX509(): pCert is nullptr", "4 sftp_sslCtx_function(): sslCtx_function, convToX509 failed."},
              CURLE_SSL_CACERT_BADFILE,
              "Problem with the SSL CA cert (path? access rights?)"},
             {"none", config.password, {}, CURLE_OK, ""},
             {ca, "wrong", {}, CURLE_LOGIN_DENIED, "Login denied"}}};
    }
};

TEST_F(CertificatesAtOnce, EachThreadTrustsItsOwn)
{
    live::setCertAuthSwitch(0);
    // All are connected before the first handshake begins.
    holdAt("GREETING");
    serve();
    const std::array<Kind, 5> all = kinds();
    run([&](unsigned thread) {
        const Kind& kind = all.at(thread % all.size());
        SFtpRequest own = requestFor("/", "list-" + std::to_string(thread));
        own.caCert = kind.caCert;
        own.password = kind.password;
        TSP_RequestID.get() = 100 + thread;
        return difference(expected(kind, 100 + thread), call(&SFtpClient::Listsftpdir, own));
    });
    EXPECT_EQ(kThreads, held());
}

TEST_F(FailuresAtOnce, UploadsLogFailuresUnderTheirOwnRequest)
{
    holdAt("TYPE");
    misbehave("STOR=reply:552 no room");
    writeFile(local("file"), "content");
    serve();
    const std::string text = "Upload failed (at start/before it took off)";
    const std::string asked = "4 CurlSFtpResponse::GetErrString(): Get error string: " + text;
    const Lines records = {asked,
                           "4 CurlSFtpResponse::UploadFileToSFtpServer(): "
                           "Perform upload file failed, m_ErrorCodeis 25, errorString is" +
                               text,
                           asked, asked,
                           "4 SFtpClient::UploadFileToSFtpServer(): "
                           "Send SFtp request occur network error. Error  is " +
                               text};
    run([&](unsigned thread) {
        const SFtpRequest own = requestFor("/file-" + std::to_string(thread));
        TSP_RequestID.get() = 100 + thread;
        return difference({CURLE_UPLOAD_FAILED, text, withIdentifier(100 + thread, records)},
                          call(&SFtpClient::UploadFileToSFtpServer, own));
    });
    EXPECT_EQ(kThreads, held());
}

} // namespace
