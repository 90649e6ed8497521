#include "harness/Contract.h"

#include "transfer/CurlSFtpResponse.h"

#include <cstdint>

namespace {

class RenameContract : public Contract
{
protected:
    RenameContract() { request.localPath = "b.bak"; }

    Lines rename(bool expected, int code, uint32_t timeout = 90)
    {
        return journalOf([&] {
            CurlSFtpResponse transfer;
            {
                const memory::Pause pause;
                keepMembers(transfer);
            }
            EXPECT_EQ(expected, transfer.ReNameSFtpFile(request, timeout));
            EXPECT_EQ(code, transfer.m_ErrorCode);
            expectMembersKept(transfer);
        });
    }

    Lines untilPerformed(const std::string& command) const
    {
        return Lines({"handle 1 made", "credentials joined", "open /dev/null w+"}) + tlsStep(1) +
               Lines({"list of its own: " + command, "1 POSTQUOTE = [" + command + "]", "1 URL = " + request.remotePath,
                      "1 PORT = 4000060021", "1 USERPWD = operator:correct horse battery", "1 perform",
                      "credentials wiped"});
    }

    static Lines success()
    {
        return {"close", "log 2 SFtpClient 77 CurlSFtpResponse::ReNameSFtpFile(): 0|ReNameSFtpFile():end |",
                "handle 1 cleaned up"};
    }

    static Lines failure(int code)
    {
        return {"log 4 SFtpClient 77 CurlSFtpResponse::ReNameSFtpFile(): "
                "0|ReNameSFtpFile() rename file failed.code:|" +
                    std::to_string(code) + "|",
                "close", "handle 1 cleaned up"};
    }

    void expectCommand(const std::string& url, const std::string& command)
    {
        scripted::curl().made = 0;
        request.remotePath = url;
        EXPECT_EQ(untilPerformed(command) + success(), rename(true, 0)) << url;
    }

    void expectNoDirectory(const std::string& url)
    {
        scripted::curl().made = 0;
        request.remotePath = url;
        // The credentials come and go between two lines: they are wiped before the record.
        const Lines expected = {"handle 1 made",
                                "log 4 SFtpClient 77 CurlSFtpResponse::ReNameSFtpFile(): "
                                "0|ReNameSFtpFile(): get localpath error. |",
                                "handle 1 cleaned up"};
        EXPECT_EQ(expected, rename(false, 2)) << url;
    }
};

TEST_F(RenameContract, SuccessClosesTheStreamBeforeItsRecord)
{
    EXPECT_EQ(untilPerformed("rename /backup/a.bak /backup/b.bak") + success(), rename(true, 0));
}

TEST_F(RenameContract, FailureLogsTheCodeBeforeItClosesTheStream)
{
    for (int code = 1; code < 128; ++code) {
        scripted::curl().made = 0;
        performGives(static_cast<CURLcode>(code));
        EXPECT_EQ(untilPerformed("rename /backup/a.bak /backup/b.bak") + failure(code), rename(false, code));
    }
}

TEST_F(RenameContract, TheDirectoryIsWhatFollowsTheLastColon)
{
    expectCommand("scheme://host:21/data/", "rename /data/a.bak /data/b.bak");
    expectCommand("scheme://host/data/", "rename //host/data/a.bak //host/data/b.bak");
    expectCommand("scheme://host:21/x:y/", "rename /a.bak /b.bak");
    expectCommand("scheme://host:21/data", "rename /dataa.bak /datab.bak");
    expectCommand("scheme://host:21/", "rename /a.bak /b.bak");
    expectCommand("scheme://host:21/a?b#c%20d/", "rename /a?b#c%20d/a.bak /a?b#c%20d/b.bak");
}

TEST_F(RenameContract, AnEmptyNewNameEndsTheCommandInTheDirectory)
{
    request.localPath = "";
    expectCommand("scheme://host:21/data/", "rename /data/a.bak /data/");
}

TEST_F(RenameContract, NamesAreNotQuoted)
{
    request.remoteFileName = "a b";
    request.localPath = "c d";
    expectCommand("scheme://host:21/data/", "rename /data/a b /data/c d");
}

TEST_F(RenameContract, AUrlWithoutADirectoryEndsItBeforeAnyOption)
{
    expectNoDirectory("");
    expectNoDirectory("no colon/at/all/");
    expectNoDirectory("scheme://host:21");
    expectNoDirectory("/before:after");
}

TEST_F(RenameContract, ADeviceThatCannotBeOpenedEndsItBeforeAnyOption)
{
    recorded::files().cannotOpen = "/dev/null";
    const Lines expected = {"handle 1 made",
                            "credentials joined",
                            "open /dev/null w+ fails",
                            "credentials wiped",
                            "log 2 SFtpClient 77 CurlSFtpResponse::ReNameSFtpFile(): "
                            "0|ReNameSFtpFile():open file failed. |",
                            "handle 1 cleaned up"};
    EXPECT_EQ(expected, rename(false, 2));
}

TEST_F(RenameContract, ACommandThatIsLostNeverReachesTheServer)
{
    scripted::curl().lists = false;
    const Lines lines = journalOf([&] {
        CurlSFtpResponse transfer;
        EXPECT_THROW(transfer.ReNameSFtpFile(request, 90), std::bad_alloc);
        EXPECT_EQ(2, transfer.m_ErrorCode);
    });
    const Lines expected = Lines({"handle 1 made", "credentials joined", "open /dev/null w+"}) + tlsStep(1) +
                           Lines({"list of its own: rename /backup/a.bak /backup/b.bak", "close", "credentials wiped",
                                  "handle 1 cleaned up"});
    EXPECT_EQ(expected, lines);
}

TEST_F(RenameContract, TheTimeoutHasNoEffect)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        scripted::curl().made = 0;
        EXPECT_EQ(untilPerformed("rename /backup/a.bak /backup/b.bak") + success(), rename(true, 0, timeout));
    }
}

TEST_F(RenameContract, LibcurlGetsACopyOfTheUrl)
{
    rename(true, 0);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}

} // namespace
