#include "contract/Contract.h"

#include <SFtpClient.h>

namespace {

class SizeCheckContract : public Contract
{
protected:
    SizeCheckContract() { request.remotePath = "ftp://server:2121/backup/a.bak"; }

    Lines check(bool expected)
    {
        return journalOf([&] { EXPECT_EQ(expected, facade.CheckFileSizeBeforeDownload(request)); });
    }

    // The journal between the transfer and the end.
    void expectAfterPerform(const Lines& middle, bool accepted)
    {
        EXPECT_TRUE(
            sameLines(untilPerformed() + middle + Lines{"credentials wiped", "handle 1 cleaned up"}, check(accepted)));
    }

    static Lines untilPerformed()
    {
        return {"handle 1 made",
                "credentials joined",
                "1 VERBOSE = 1",
                "1 URL = ftp://server:2121/backup/a.bak",
                kPort,
                "1 USERPWD = operator:correct horse battery",
                "1 NOPROGRESS = 1",
                "1 NOBODY = 1",
                "1 HEADER = 1",
                "1 FILETIME = 1",
                "1 perform"};
    }

    static std::string record(int level, const std::string& pieces)
    {
        return recordLine(level, "SFtpClient::CheckFileSizeBeforeDownload", pieces);
    }

    static std::string failed(int code) { return record(4, "curl_easy_perform fail, res =|" + scripted::text(code)); }

    void expectSize(curl_off_t size, const std::string& limit, bool accepted)
    {
        SCOPED_TRACE(request.localPath + " " + std::to_string(size));
        scripted::curl().size = size;
        const Lines measured = {
            kAsked, record(1, "remoteFileSizeByte =|" + std::to_string(size) + "|, fileSizeLimit = |" + limit)};
        expectAfterPerform(measured + (accepted ? Lines{} : Lines{record(4, "file size is invalid.")}), accepted);
    }

    static constexpr const char* kAsked = "1 getinfo CONTENT_LENGTH_DOWNLOAD_T";
    static constexpr const char* kRetentionLimit = "104857600";
    static constexpr const char* kLimit = "53687091200";

    SFtpClient facade;
};

TEST_F(SizeCheckContract, ASizeBelowTheLimitPasses)
{
    expectSize(1048576, kLimit, true);
    expectSize(0, kLimit, true);
    expectSize(1, kLimit, true);
    expectSize(53687091199, kLimit, true);
}

TEST_F(SizeCheckContract, TheLimitItselfIsRefused)
{
    expectSize(53687091200, kLimit, false);
    expectSize(53687091201, kLimit, false);
    expectSize(INT64_MAX, kLimit, false);
}

TEST_F(SizeCheckContract, OnlyMinusOneIsAnUnknownSize)
{
    expectSize(-1, kLimit, false);
    expectSize(-2, kLimit, true);
    expectSize(INT64_MIN, kLimit, true);
}

TEST_F(SizeCheckContract, ASizeThatLibcurlDoesNotWriteIsUnknown)
{
    scripted::curl().tellsSize = false;
    expectSize(-1, kLimit, false);
}

TEST_F(SizeCheckContract, TheRetentionDatabaseHasItsOwnLimit)
{
    for (const char* localPath : {"/data/RetentionDB.db", "RetentionDB.db", "/RetentionDB.db", "a/b/RetentionDB.db"}) {
        request.localPath = localPath;
        expectSize(104857599, kRetentionLimit, true);
        expectSize(104857600, kRetentionLimit, false);
        expectSize(104857601, kRetentionLimit, false);
        expectSize(-1, kRetentionLimit, false);
    }
}

TEST_F(SizeCheckContract, AnyOtherNameHasTheLargeLimit)
{
    for (const char* localPath :
         {"/data/retentiondb.db", "/data/RetentionDB.db/", "/data/", "", "RetentionDB.db.bak",
          "/data/OldRetentionDB.db", "RetentionDB.dbx", "\\RetentionDB.db", "/data/RetentionDB.db/x"}) {
        request.localPath = localPath;
        expectSize(104857600, kLimit, true);
    }
}

TEST_F(SizeCheckContract, OnlyAMissingFilePassesDespiteTheFailure)
{
    for (int code = 1; code < kEndOfCodes && !HasFailure(); ++code) {
        SCOPED_TRACE(nameOf(code));
        performGives(code);
        expectAfterPerform({failed(code)}, code == CURLE_REMOTE_FILE_NOT_FOUND);
    }
}

TEST_F(SizeCheckContract, ASizeThatCannotBeReadIsRefusedUnlessTheFileIsMissing)
{
    for (const CURLcode code : {CURLE_UNKNOWN_OPTION, CURLE_REMOTE_FILE_NOT_FOUND}) {
        SCOPED_TRACE(nameOf(code));
        scripted::curl().getinfo = code;
        expectAfterPerform({kAsked, record(4, "get file size failed. ret = |" + scripted::text(code))},
                           code == CURLE_REMOTE_FILE_NOT_FOUND);
    }
}

TEST_F(SizeCheckContract, WithoutALibcurlTextTheRecordEndsAtItsOwn)
{
    const std::string begin = "log 4 SFtpClient 77 SFtpClient::CheckFileSizeBeforeDownload(): 0|";
    scripted::curl().texts = false;
    performGives(CURLE_LOGIN_DENIED);
    // A null text sets the record's stream bad, so that the empty text that closes it is lost too.
    expectAfterPerform({begin + "curl_easy_perform fail, res = (bad)"}, false);
    performGives(CURLE_OK);
    scripted::curl().getinfo = CURLE_UNKNOWN_OPTION;
    expectAfterPerform({kAsked, begin + "get file size failed. ret =  (bad)"}, false);
}

TEST_F(SizeCheckContract, WithoutAHandleItIsRefused)
{
    scripted::curl().handles = false;
    EXPECT_TRUE(sameLines({"curl_easy_init gives nothing", record(4, "nullptr.")}, check(false)));
}

TEST_F(SizeCheckContract, LibcurlGetsACopyOfTheUrl)
{
    check(true);
    expectUrlCopied();
}

} // namespace
