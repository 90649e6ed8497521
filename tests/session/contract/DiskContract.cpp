// Disks that are full or broken: what a session leaves behind, and what it says.
#include "RecordedDisk.h"
#include "SessionContract.h"

#include "OperationCalls.h"
#include "support/FileSizeLimit.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace {

// A download and a listing: what writes a local file.
class SessionDisk : public SessionContract, public testing::WithParamInterface<const char*>
{
protected:
    SessionDisk()
    {
        writeFile(request.localPath, "what was there before");
        if (isList()) {
            content = "a\nb\nc\n";
        }
    }

    bool isList() const { return std::string(GetParam()) == "Listsftpdir"; }

    Lines run(int expected) { return journalOfCall(operationCall(GetParam()).run, expected); }

    // A failure that says so, and that leaves everything as it was.
    void expectNotWritten(int error, const std::string& file)
    {
        const Lines lines = run(CURLE_WRITE_ERROR);
        EXPECT_EQ(scripted::text(23) + ": localPath " + file + " cannot be written: " + std::strerror(error),
                  errorText.substr(0, errorText.find(" (the server")));
        EXPECT_EQ(1, std::count(lines.begin(), lines.end(), failureOf(GetParam(), request, 23, errorText)));
        expectAsBefore();
    }

    void expectAsBefore() const
    {
        EXPECT_EQ("what was there before", contentOf(request.localPath));
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(path("")), {})) << "a temporary file is left";
    }
};

} // namespace

TEST_P(SessionDisk, ThatIsFullLeavesTheFileAsItWas)
{
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}, content.size() - 1}) {
        const FileSizeLimit limit(room);
        expectNotWritten(EFBIG, request.localPath);
    }
    const FileSizeLimit limit(content.size());
    run(CURLE_OK);
    EXPECT_EQ(content, contentOf(request.localPath));
}

TEST_P(SessionDisk, ThatTakesLittleAtATimeGetsAll)
{
    recorded::disk().mostAtOnce = 3;
    recorded::disk().interruptions = 5;
    run(CURLE_OK);
    EXPECT_EQ(content, contentOf(request.localPath));
}

TEST_P(SessionDisk, ThatFailsLeavesTheFileAsItWas)
{
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
        for (const char* const call : {"write", "fsync", "rename"}) {
            recorded::disk().failing = {{call, error}};
            expectNotWritten(error, request.localPath);
        }
    }
}

// As one on the network does, which nobody has waited for.
TEST_P(SessionDisk, ThatFailsWhenItIsClosedLeavesTheFileAsItWas)
{
    options.syncDownload = false;
    recorded::disk().failing = {{"close", EDQUOT}};
    expectNotWritten(EDQUOT, request.localPath);
}

TEST_P(SessionDisk, IsWaitedForUnlessTheHostSaysOtherwise)
{
    const auto waits = [this] {
        const Lines lines = run(CURLE_OK);
        EXPECT_EQ(content, contentOf(request.localPath));
        return std::count(lines.begin(), lines.end(), "fsync");
    };
    EXPECT_EQ(2, waits());
    EXPECT_EQ(std::filesystem::path(request.localPath).parent_path(), recorded::disk().synced);
    options.syncDownload = false;
    EXPECT_EQ(0, waits());
    options.resume = true;
    EXPECT_EQ(0, waits());
}

TEST_P(SessionDisk, WithoutAPlaceForTheFileIsNoticedBeforeAnyTransfer)
{
    const auto untold = [&](const std::string& where, int error) {
        request.localPath = where;
        const Lines lines = run(CURLE_WRITE_ERROR);
        EXPECT_EQ(scripted::text(23) + ": localPath " + where + " cannot be written: " + std::strerror(error),
                  errorText);
        EXPECT_EQ(0, std::count(lines.begin(), lines.end(), "multi 1 perform"));
    };
    untold(path("no/such"), ENOENT);
    untold(path(""), EISDIR);
    untold("", ENOENT);
}

TEST_P(SessionDisk, ThatIsADeviceIsWrittenTo)
{
    request.localPath = "/dev/full";
    run(CURLE_WRITE_ERROR);
    EXPECT_EQ(scripted::text(23) + ": localPath /dev/full cannot be written: " + std::strerror(ENOSPC),
              errorText.substr(0, errorText.find(" (the server")));
    request.localPath = "/dev/null";
    run(CURLE_OK);
}

INSTANTIATE_TEST_SUITE_P(Of, SessionDisk, testing::Values("DownLoadSFtpFile", "Listsftpdir"),
                         [](const testing::TestParamInfo<const char*>& parameter) { return parameter.param; });

namespace {

class SessionSource : public SessionContract
{
};

} // namespace

TEST_F(SessionSource, ThatCannotBeReadEndsAnUploadAndIsRemoved)
{
    recorded::disk().failing = {{"read", EIO}};
    const Lines lines = journalOfCall(operationCall("UploadFileToSFtpServer").run, CURLE_READ_ERROR);
    EXPECT_EQ(scripted::text(26) + ": localPath " + request.localPath + " cannot be sent: " + std::strerror(EIO),
              errorText);
    EXPECT_TRUE(hasLine("1 PREQUOTE = [*DELE .a.bak.XXXXXXXXXXXX.part]", lines));
    EXPECT_EQ(0, std::count(lines.begin(), lines.end(), "1 POSTQUOTE = [RNFR"));
}

TEST_F(SessionSource, ThatIsInterruptedIsReadOn)
{
    recorded::disk().interruptions = 5;
    journalOfCall(operationCall("UploadFileToSFtpServer").run);
    EXPECT_EQ("seventeen bytes.\n", uploaded);
}

TEST_F(SessionSource, ThatGrowsOrShrinksMeanwhileEndsAnUpload)
{
    const auto served = scripted::curl().perform;
    const auto whileSending = [&](const std::string& text) {
        writeFile(request.localPath, "seventeen bytes.\n");
        scripted::curl().perform = [&, text](scripted::Handle& handle) {
            const memory::Pause pause;
            if (handle.isOn(CURLOPT_UPLOAD)) {
                writeFile(request.localPath, text);
            }
            return served(handle);
        };
        journalOfCall(operationCall("UploadFileToSFtpServer").run, CURLE_READ_ERROR);
    };
    whileSending("seventeen bytes.\nand more");
    EXPECT_EQ(scripted::text(26) + ": the source has more than the 17 bytes that were announced", errorText);
    whileSending("seven");
    EXPECT_EQ(scripted::text(26) + ": the source has only 5 of the 17 bytes that were announced", errorText);
}

TEST_F(SessionSource, IsShownWithoutControlBytes)
{
    request.localPath = path("a\x1b[31m\nb");
    const std::string visible = path("a\\x1B[31m\\x0Ab");
    journalOfCall(operationCall("UploadFileToSFtpServer").run, CURLE_READ_ERROR);
    EXPECT_EQ(scripted::text(26) + ": localPath " + visible + " cannot be sent: " + std::strerror(ENOENT), errorText);
    request.localPath += "/";
    journalOfCall(operationCall("DownLoadSFtpFile").run, CURLE_WRITE_ERROR);
    EXPECT_EQ(scripted::text(23) + ": localPath " + visible + "/ cannot be written: " + std::strerror(EISDIR),
              errorText);
}

TEST_F(SessionSource, ThatIsNoFileIsRefusedBeforeAnyTransfer)
{
    const auto untold = [&](const std::string& where, const std::string& why) {
        request.localPath = where;
        const Lines lines = journalOfCall(operationCall("UploadFileToSFtpServer").run, CURLE_READ_ERROR);
        EXPECT_EQ(scripted::text(26) + ": localPath " + where + " cannot be sent: " + why, errorText);
        EXPECT_EQ(0, std::count(lines.begin(), lines.end(), "multi 1 perform"));
    };
    untold(path("missing"), std::strerror(ENOENT));
    untold(path(""), "it is no regular file; UploadFrom sends from anything");
    untold("/dev/zero", "it is no regular file; UploadFrom sends from anything");
    recorded::files().statFails = true;
    untold(path("local"), "it is no regular file; UploadFrom sends from anything");
}
