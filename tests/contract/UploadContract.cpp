#include "contract/TransferContract.h"

#include <unistd.h>

namespace {

constexpr const char* kFunction = "CurlSFtpResponse::UploadFileToSFtpServer";

void aim(SFtpRequest& request) { request.remotePath = "ftp://server:2121/backup/a.bak"; }

Lines untilPerformedWith(const SFtpRequest& request, const std::string& size)
{
    return {"handle 1 made",
            "credentials joined",
            "open " + request.localPath + " rb",
            "stat",
            "1 WRITEFUNCTION = GetDataCallback",
            "1 WRITEDATA = the transfer object",
            "1 UPLOAD = 1",
            "1 URL = ftp://server:2121/backup/a.bak",
            kPort,
            "1 USERPWD = operator:correct horse battery",
            "1 FTP_CREATE_MISSING_DIRS = 2",
            "1 CONNECTTIMEOUT = 20",
            "1 NOSIGNAL = 1",
            "1 READDATA = stream",
            "1 INFILESIZE_LARGE = " + size + " (64 bits)",
            "1 perform",
            "credentials wiped"};
}

Lines untilPerformed(const SFtpRequest& request) { return untilPerformedWith(request, "17"); }

// The record carries the code that is reported, and the text of the raw one.
Lines failure(int code)
{
    const int reported = code == CURLE_REMOTE_ACCESS_DENIED ? CURLE_REMOTE_FILE_NOT_FOUND : code;
    return {recordLine(4, "CurlSFtpResponse::GetErrString", "Get error string: |" + scripted::text(code)),
            recordLine(4, kFunction,
                       "Perform upload file failed, m_ErrorCodeis |" + std::to_string(reported) + "|, errorString is|" +
                           scripted::text(code)),
            "close"};
}

} // namespace

Transfer upload()
{
    return {"Upload", &CurlSFtpResponse::UploadFileToSFtpServer, aim, untilPerformed, {"close"}, failure, true};
}

namespace {

class UploadContract : public TransferContract
{
protected:
    UploadContract() : TransferContract(upload()) {}

    void expectSize(const std::string& size)
    {
        EXPECT_TRUE(sameLines(untilPerformedWith(request, size) + transfer.success + Lines{"handle 1 cleaned up"},
                              run(true, CURLE_OK)));
    }
};

TEST_F(UploadContract, AnnouncesTheSizeWith64Bits)
{
    writeFile(request.localPath, "");
    expectSize("0");
    ASSERT_EQ(0, truncate(request.localPath.c_str(), 53687091200));
    expectSize("53687091200");
}

class ResponseOfItsOwn : public CurlSFtpResponse
{
public:
    int GetErrCode() override { return -5; }
    std::string GetErrString() override { return "a text of its own"; }
};

TEST_F(UploadContract, AsksTheVirtualInterfaceForItsRecord)
{
    performGives(CURLE_LOGIN_DENIED);
    const Lines lines = journalOf([&] { EXPECT_TRUE(ResponseOfItsOwn().UploadFileToSFtpServer(request, 90)); });
    const std::string record =
        recordLine(4, kFunction, "Perform upload file failed, m_ErrorCodeis |-5|, errorString is|a text of its own");
    EXPECT_TRUE(sameLines({"credentials wiped", record, "close", "handle 1 cleaned up"}, lastOf(lines, 4)));
}

TEST_F(UploadContract, CollectsWhatTheServerSendsHoweverMuchItIs)
{
    const std::string block(1024 * 1024, 'x');
    scripted::curl().perform = [&](scripted::Handle& handle) {
        EXPECT_EQ(4U, handle.receive("one "));
        EXPECT_EQ(block.size(), handle.receive(block));
        EXPECT_EQ(block.size(), handle.receive(block));
        return CURLE_OK;
    };
    CurlSFtpResponse response;
    response.recvData = "zero ";
    EXPECT_TRUE(response.UploadFileToSFtpServer(request, 90));
    EXPECT_TRUE("zero one " + block + block == response.recvData);
}

TEST_F(UploadContract, GivesLibcurlTheFile)
{
    std::string sent(100, '\0');
    scripted::curl().perform = [&](scripted::Handle& handle) {
        auto* stream = static_cast<FILE*>(handle.pointer(CURLOPT_READDATA));
        sent.resize(fread(sent.data(), 1, sent.size(), stream));
        return CURLE_OK;
    };
    expectSuccess();
    EXPECT_EQ("seventeen bytes.\n", sent);
}

TEST_F(UploadContract, SetsNoOptionIfTheFileCannotBeOpened)
{
    request.localPath = path("missing");
    expectEndedAfter({"credentials joined", "open " + request.localPath + " rb fails", "credentials wiped",
                      recordLine(4, kFunction, "Open local file file failed.")});
}

TEST_F(UploadContract, ClosesAFileThatCannotBeMeasuredAfterTheRecord)
{
    recorded::files().statFails = true;
    expectEndedAfter({"credentials joined", "open " + request.localPath + " rb", "stat fails", "credentials wiped",
                      recordLine(4, kFunction, "Get the attachment file size failed."), "close"});
}

} // namespace
