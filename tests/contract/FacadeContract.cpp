#include "contract/Contract.h"

#include <SFtpClient.h>

#include <openssl/err.h>

#include <optional>
#include <stdexcept>

namespace {

struct Operation
{
    const char* name;
    int (SFtpClient::*call)(const SFtpRequest&, std::string&);
    const char* noClient;
    const char* noResponse;
    const char* failed;
    bool checksSize;
};

const Operation kOperations[] = {
    {"Listsftpdir", &SFtpClient::Listsftpdir, "Listsftpdir(): SFtpClient is NULL. ",
     "Listsftpdir():Return response is empty. ", "Listsftpdir():Send SFtp request occur network error. Error  is ",
     false},
    {"DownLoadSFtpFile", &SFtpClient::DownLoadSFtpFile, "DownLoadSFtpFile(): SFtpClient is NULL. ",
     "DownLoadSFtpFile(): Return response is empty. ",
     "DownLoadSFtpFile(): Send SFtp request occur network error. Error  is ", true},
    {"ReNameSFtpFile", &SFtpClient::ReNameSFtpFile, "ReNameSFtpFile(): SFtpClient is NULL. ",
     "ReNameSFtpFile(): Return response is empty. ",
     "ReNameSFtpFile(): Send SFtp request occur network error. Error  is ", false},
    {"DelSFtpFile", &SFtpClient::DelSFtpFile, "DelSFtpFile(): SFtpClient is NULL. ",
     "DelSFtpFile():Return response is empty. ", "DelSFtpFile():Send SFtp request occur network error. Error  is ",
     false},
    {"UploadFileToSFtpServer", &SFtpClient::UploadFileToSFtpServer, "UploadFileToServer, SFtpClient is NULL. ",
     "Return response is empty. ", "Send SFtp request occur network error. Error  is ", false},
};

class FacadeContract : public Contract
{
protected:
    FacadeContract() { writeFile(request.localPath, "content"); }

    static std::string record(const Operation& operation, const std::string& pieces)
    {
        return recordLine(4, std::string("SFtpClient::") + operation.name, pieces);
    }

    Lines run(SFtpClient& facade, const Operation& operation, int expected)
    {
        return journalOf([&] {
            const int result = (facade.*operation.call)(request, errorText);
            const memory::Pause pause;
            EXPECT_EQ(nameOf(expected), nameOf(result));
        });
    }

    // Lets the size check pass and the transfer after it end with this code.
    static void transferGives(const Operation& operation, CURLcode code)
    {
        scripted::curl().perform = [&operation, code](scripted::Handle& handle) {
            return operation.checksSize && handle.number() == 1 ? CURLE_OK : code;
        };
    }

    std::string errorText = "as it was";
};

TEST_F(FacadeContract, SuccessLeavesTheErrorTextUnchanged)
{
    SFtpClient facade;
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        const Lines lines = run(facade, operation, CURLE_OK);
        EXPECT_EQ("as it was", errorText);
        EXPECT_EQ(operation.checksSize ? "handle 2 cleaned up" : "handle 1 cleaned up", lines.back());
        for (const std::string& line : lines) {
            EXPECT_EQ(std::string::npos, line.find("log 4")) << line;
        }
    }
}

TEST_F(FacadeContract, FailureReturnsTheReportedCodeAndTheTextOfTheRawOne)
{
    SFtpClient facade;
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        errorText = "as it was";
        transferGives(operation, CURLE_REMOTE_ACCESS_DENIED);
        const Lines lines = run(facade, operation, CURLE_REMOTE_FILE_NOT_FOUND);
        EXPECT_EQ(scripted::text(CURLE_REMOTE_ACCESS_DENIED), errorText);
        const std::string text = scripted::text(CURLE_REMOTE_ACCESS_DENIED);
        const std::string asked = recordLine(4, "CurlSFtpResponse::GetErrString", "Get error string: |" + text);
        // Called once for the caller, once inside the record; the record that was begun first is written last.
        EXPECT_TRUE(sameLines({"close", asked, asked, record(operation, operation.failed + ("|" + text)),
                               operation.checksSize ? "handle 2 cleaned up" : "handle 1 cleaned up"},
                              lastOf(lines, 5)));
    }
}

TEST_F(FacadeContract, EveryCodeExceptNineIsReturnedUnchanged)
{
    SFtpClient facade;
    for (int code = 1; code < kEndOfCodes; ++code) {
        performGives(code);
        const int reported = code == CURLE_REMOTE_ACCESS_DENIED ? CURLE_REMOTE_FILE_NOT_FOUND : code;
        EXPECT_EQ(nameOf(reported), nameOf(facade.Listsftpdir(request, errorText)));
        EXPECT_EQ(scripted::text(code), errorText);
    }
}

TEST_F(FacadeContract, TheListingWaitsNinetySeconds)
{
    SFtpClient facade;
    EXPECT_TRUE(hasLine("1 FTP_RESPONSE_TIMEOUT = 90", run(facade, kOperations[0], CURLE_OK)));
}

// A failed handshake leaves its errors in the queue of the thread, for the host to read and clear.
TEST_F(FacadeContract, NoOperationClearsOpensslsErrors)
{
    SFtpClient facade;
    std::size_t performed = 0;
    for (const Operation& operation : kOperations) {
        for (const CURLcode code : {CURLE_OK, CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_CACERT_BADFILE}) {
            for (const bool checkFails : {false, true}) {
                const unsigned long hosts = recorded::leaveHostsError();
                performed = 0;
                scripted::curl().perform = [&](scripted::Handle&) {
                    ERR_raise(ERR_LIB_USER, ERR_R_FATAL);
                    ++performed;
                    return operation.checksSize && performed == 1 && !checkFails ? CURLE_OK : code;
                };
                (facade.*operation.call)(request, errorText);
                EXPECT_EQ(std::vector<unsigned long>(1 + performed, hosts), recorded::takeErrors()) << operation.name;
            }
        }
    }
}

TEST_F(FacadeContract, WithoutALibcurlTextTheErrorTextSaysUnknown)
{
    scripted::curl().texts = false;
    performGives(CURLE_LOGIN_DENIED);
    SFtpClient facade;
    const Lines lines = run(facade, kOperations[0], CURLE_LOGIN_DENIED);
    EXPECT_EQ("UnKown error", errorText);
    EXPECT_EQ(record(kOperations[0], kOperations[0].failed + std::string("|UnKown error")), *(lines.end() - 2));
}

TEST_F(FacadeContract, AnEmptyLibcurlTextCountsAsAText)
{
    scripted::curl().emptyTexts = true;
    performGives(CURLE_LOGIN_DENIED);
    SFtpClient facade;
    run(facade, kOperations[0], CURLE_LOGIN_DENIED);
    EXPECT_EQ("", errorText);
}

TEST_F(FacadeContract, WithoutAResponseTheResultIsMinusOne)
{
    scripted::curl().handles = false;
    SFtpClient facade;
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        if (operation.checksSize) {
            continue; // below: its size check needs a handle
        }
        const Lines lines = run(facade, operation, -1);
        EXPECT_EQ("as it was", errorText);
        ASSERT_EQ(3U, lines.size());
        EXPECT_EQ("curl_easy_init gives nothing", lines[0]);
        EXPECT_NE(std::string::npos, lines[1].find("CurlHttpClient object failed.|curl initialize failed.|"));
        EXPECT_EQ(record(operation, operation.noResponse), lines[2]);
    }
}

TEST_F(FacadeContract, WithoutAResponseAfterTheSizeCheckTheDownloadIsMinusOne)
{
    SFtpClient facade;
    scripted::curl().perform = [](scripted::Handle&) {
        scripted::curl().handles = false;
        return CURLE_OK;
    };
    const Lines lines = run(facade, kOperations[1], -1);
    EXPECT_EQ("as it was", errorText);
    EXPECT_TRUE(
        sameLines({"credentials wiped", "handle 1 cleaned up", "curl_easy_init gives nothing",
                   recordLine(4, "CurlSFtpClient::DownLoadSFtpFile",
                              "DownLoadSFtpFile():, Create  CurlHttpClient object failed.|curl initialize failed."),
                   record(kOperations[1], kOperations[1].noResponse)},
                  lastOf(lines, 5)));
}

TEST_F(FacadeContract, WithoutAClientEveryOperationIsMinusOne)
{
    std::optional<SFtpClient> facade;
    journalOf([&] {
        memory::failAllocation(1);
        facade.emplace();
    });
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        const Lines lines = run(*facade, operation, -1);
        EXPECT_EQ("as it was", errorText);
        EXPECT_EQ(record(operation, operation.noClient), lines.back());
        if (!operation.checksSize) {
            EXPECT_EQ(1U, lines.size());
        } else {
            EXPECT_EQ("handle 1 made", lines.front()) << "the size check comes first";
            EXPECT_EQ("handle 1 cleaned up", *(lines.end() - 2));
        }
    }
}

TEST_F(FacadeContract, ARefusedSizeCheckEndsTheDownloadSilently)
{
    SFtpClient facade;
    performGives(CURLE_COULDNT_CONNECT);
    const Lines lines = run(facade, kOperations[1], -1);
    EXPECT_EQ("as it was", errorText);
    EXPECT_EQ("content", contentOf(request.localPath));
    EXPECT_TRUE(sameLines({"1 perform",
                           recordLine(4, "SFtpClient::CheckFileSizeBeforeDownload",
                                      "curl_easy_perform fail, res =|" + scripted::text(CURLE_COULDNT_CONNECT)),
                           "credentials wiped", "handle 1 cleaned up"},
                          lastOf(lines, 4)));
}

TEST_F(FacadeContract, TheDownloadFirstChecksTheSizeOnASeparateHandle)
{
    SFtpClient facade;
    const Lines lines = run(facade, kOperations[1], CURLE_OK);
    Lines handles;
    for (const std::string& line : lines) {
        if (line.rfind("handle", 0) == 0 || line.find("perform") != std::string::npos) {
            handles.push_back(line);
        }
    }
    EXPECT_TRUE(sameLines(
        {"handle 1 made", "1 perform", "handle 1 cleaned up", "handle 2 made", "2 perform", "handle 2 cleaned up"},
        handles));
}

TEST_F(FacadeContract, AnExceptionInTheOperationPropagates)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::runtime_error("from within"); };
    SFtpClient facade;
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        EXPECT_THROW((facade.*operation.call)(request, errorText), std::runtime_error);
    }
    EXPECT_EQ("as it was", errorText);
}

TEST_F(FacadeContract, TheClientEndsWithTheFacade)
{
    expectNothingNoted([] {
        std::optional<SFtpClient> facade;
        facade.emplace();
        EXPECT_EQ(1U, memory::livingBlocks());
        facade.reset();
        EXPECT_EQ(0U, memory::livingBlocks());
    });
}

TEST_F(FacadeContract, AnEmptyRequestReturnsLibcurlsResult)
{
    request = {};
    SFtpClient facade;
    performGives(CURLE_URL_MALFORMAT);
    EXPECT_EQ(CURLE_FAILED_INIT, facade.Listsftpdir(request, errorText)) << "no local file";
    EXPECT_EQ(-1, facade.DownLoadSFtpFile(request, errorText)) << "no size";
    EXPECT_EQ(CURLE_FAILED_INIT, facade.ReNameSFtpFile(request, errorText)) << "no directory";
    EXPECT_EQ(CURLE_FAILED_INIT, facade.DelSFtpFile(request, errorText)) << "no directory";
    EXPECT_EQ(CURLE_FAILED_INIT, facade.UploadFileToSFtpServer(request, errorText)) << "no local file";
}

} // namespace
