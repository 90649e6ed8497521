#include "harness/Contract.h"

#include "transfer/CurlSFtpResponse.h"

#include <cstdint>

namespace {

class DeleteContract : public Contract
{
protected:
    Lines remove(bool expected, int code, uint32_t timeout = 90)
    {
        return journalOf([&] {
            CurlSFtpResponse transfer;
            {
                const memory::Pause pause;
                keepMembers(transfer);
            }
            EXPECT_EQ(expected, transfer.DelSFtpFile(request, timeout));
            EXPECT_EQ(code, transfer.m_ErrorCode);
            expectMembersKept(transfer);
        });
    }

    Lines untilPerformed(const std::string& command) const
    {
        return Lines({"handle 1 made", "credentials joined", "open /dev/null w+"}) + tlsStep(1) +
               Lines({"list of its own: " + command, "1 POSTQUOTE = [" + command + "]",
                      "1 WRITEFUNCTION = sftp_write_data", "1 WRITEDATA = stream", "1 URL = " + request.remotePath,
                      "1 PORT = 4000060021", "1 USERPWD = operator:correct horse battery", "1 perform",
                      "credentials wiped"});
    }

    static Lines success()
    {
        return {"close", "log 2 SFtpClient 77 CurlSFtpResponse::DelSFtpFile(): 0|DelSFtpFile():end |",
                "handle 1 cleaned up"};
    }

    static Lines failure(int code)
    {
        return {"log 4 SFtpClient 77 CurlSFtpResponse::DelSFtpFile(): 0|DelSFtpFile() list dir failed.code:|" +
                    std::to_string(code) + "|",
                "close", "handle 1 cleaned up"};
    }

    void expectCommand(const std::string& url, const std::string& command)
    {
        scripted::curl().made = 0;
        request.remotePath = url;
        EXPECT_EQ(untilPerformed(command) + success(), remove(true, 0)) << url;
    }

    void expectNoDirectory(const std::string& url)
    {
        scripted::curl().made = 0;
        request.remotePath = url;
        // The credentials come and go between two lines: they are wiped before the record.
        const Lines expected = {"handle 1 made",
                                "log 4 SFtpClient 77 CurlSFtpResponse::DelSFtpFile(): "
                                "0|ReNameSFtpFile(): get localpath error. |",
                                "handle 1 cleaned up"};
        EXPECT_EQ(expected, remove(false, 2)) << url;
    }
};

TEST_F(DeleteContract, SuccessClosesTheStreamBeforeItsRecord)
{
    EXPECT_EQ(untilPerformed("rm /backup/a.bak") + success(), remove(true, 0));
}

TEST_F(DeleteContract, TheListingOfTheVisitIsThrownAway)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        EXPECT_EQ(7U, handle.receive("a.bak\r\n"));
        return CURLE_OK;
    };
    EXPECT_EQ(untilPerformed("rm /backup/a.bak") + success(), remove(true, 0));
}

TEST_F(DeleteContract, FailureLogsTheCodeBeforeItClosesTheStream)
{
    for (int code = 1; code < 128; ++code) {
        scripted::curl().made = 0;
        performGives(static_cast<CURLcode>(code));
        EXPECT_EQ(untilPerformed("rm /backup/a.bak") + failure(code), remove(false, code));
    }
}

TEST_F(DeleteContract, TheDirectoryIsWhatFollowsTheLastColon)
{
    request.remoteFileName = "old.bak";
    expectCommand("scheme://host:21/data/", "rm /data/old.bak");
    expectCommand("scheme://host/data/", "rm //host/data/old.bak");
    expectCommand("scheme://host:21/x:y/", "rm /old.bak");
    expectCommand("scheme://host:21/data", "rm /dataold.bak");
}

TEST_F(DeleteContract, AnEmptyNameEndsTheCommandInTheDirectory)
{
    request.remoteFileName = "";
    expectCommand("scheme://host:21/data/", "rm /data/");
}

TEST_F(DeleteContract, TheNameIsNotQuoted)
{
    request.remoteFileName = "a b";
    expectCommand("scheme://host:21/data/", "rm /data/a b");
}

TEST_F(DeleteContract, AUrlWithoutADirectoryEndsItBeforeAnyOption)
{
    expectNoDirectory("");
    expectNoDirectory("no colon/at/all/");
    expectNoDirectory("scheme://host:21");
    expectNoDirectory("/before:after");
}

TEST_F(DeleteContract, ADeviceThatCannotBeOpenedEndsItBeforeAnyOption)
{
    recorded::files().cannotOpen = "/dev/null";
    const Lines expected = {"handle 1 made",
                            "credentials joined",
                            "open /dev/null w+ fails",
                            "credentials wiped",
                            "log 2 SFtpClient 77 CurlSFtpResponse::DelSFtpFile(): "
                            "0|DelSFtpFile():open file failed. |",
                            "handle 1 cleaned up"};
    EXPECT_EQ(expected, remove(false, 2));
}

TEST_F(DeleteContract, ACommandThatIsLostNeverReachesTheServer)
{
    scripted::curl().lists = false;
    const Lines lines = journalOf([&] {
        CurlSFtpResponse transfer;
        EXPECT_THROW(transfer.DelSFtpFile(request, 90), std::bad_alloc);
        EXPECT_EQ(2, transfer.m_ErrorCode);
    });
    const Lines expected =
        Lines({"handle 1 made", "credentials joined", "open /dev/null w+"}) + tlsStep(1) +
        Lines({"list of its own: rm /backup/a.bak", "close", "credentials wiped", "handle 1 cleaned up"});
    EXPECT_EQ(expected, lines);
}

TEST_F(DeleteContract, TheTimeoutHasNoEffect)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        scripted::curl().made = 0;
        EXPECT_EQ(untilPerformed("rm /backup/a.bak") + success(), remove(true, 0, timeout));
    }
}

TEST_F(DeleteContract, LibcurlGetsACopyOfTheUrl)
{
    remove(true, 0);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}

} // namespace
