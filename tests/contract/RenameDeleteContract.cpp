#include "contract/TransferContract.h"

namespace {

void aim(SFtpRequest& request) { request.localPath = "b.bak"; }

// What comes before a command, and what after it.
Lines beginning() { return Lines{"handle 1 made", "credentials joined", "open /dev/null w+"} + tlsStep(); }

Lines rest(const SFtpRequest& request)
{
    return {"1 URL = " + request.remotePath, kPort, "1 USERPWD = operator:correct horse battery", "1 perform",
            "credentials wiped"};
}

Lines renameWith(const SFtpRequest& request, const std::string& command)
{
    return beginning() + Lines{"list of its own: " + command, "1 POSTQUOTE = [" + command + "]"} + rest(request);
}

Lines deleteWith(const SFtpRequest& request, const std::string& command)
{
    return beginning() +
           Lines{"list of its own: " + command, "1 POSTQUOTE = [" + command + "]", "1 WRITEFUNCTION = sftp_write_data",
                 "1 WRITEDATA = stream"} +
           rest(request);
}

// Both record this text when the URL has no directory.
constexpr const char* kNoDirectory = "ReNameSFtpFile(): get localpath error. ";

} // namespace

Transfer renaming()
{
    constexpr const char* kFunction = "CurlSFtpResponse::ReNameSFtpFile";
    return {"Rename",
            &CurlSFtpResponse::ReNameSFtpFile,
            aim,
            [](const SFtpRequest& request) { return renameWith(request, "rename /backup/a.bak /backup/b.bak"); },
            {"close", recordLine(2, kFunction, "ReNameSFtpFile():end ")},
            [](int code) {
                return Lines{
                    recordLine(4, kFunction, "ReNameSFtpFile() rename file failed.code:|" + std::to_string(code)),
                    "close"};
            }};
}

Transfer deletion()
{
    constexpr const char* kFunction = "CurlSFtpResponse::DelSFtpFile";
    return {"Delete",
            &CurlSFtpResponse::DelSFtpFile,
            aim,
            [](const SFtpRequest& request) { return deleteWith(request, "rm /backup/a.bak"); },
            {"close", recordLine(2, kFunction, "DelSFtpFile():end ")},
            [](int code) {
                return Lines{recordLine(4, kFunction, "DelSFtpFile() list dir failed.code:|" + std::to_string(code)),
                             "close"};
            }};
}

namespace {

class RenameDeleteContract : public TransferContract
{
protected:
    RenameDeleteContract(Transfer tested, std::string name, Lines (*with)(const SFtpRequest&, const std::string&))
        : TransferContract(std::move(tested)), function("CurlSFtpResponse::" + name), m_name(std::move(name)),
          m_with(with)
    {
    }

    void expectCommand(const std::string& url, const std::string& command)
    {
        SCOPED_TRACE(url);
        request.remotePath = url;
        EXPECT_TRUE(
            sameLines(m_with(request, command) + transfer.success + Lines{"handle 1 cleaned up"}, run(true, CURLE_OK)));
    }

    void expectEndedWithoutDirectory()
    {
        for (const char* url : {"", "no colon/at/all/", "scheme://host:21", "/before:after"}) {
            SCOPED_TRACE(url);
            request.remotePath = url;
            // The credentials are joined and wiped between two lines, before the record.
            expectEndedAfter({recordLine(4, function, kNoDirectory)});
        }
    }

    void expectEndedWithoutDevice()
    {
        recorded::files().cannotOpen = "/dev/null";
        expectEndedAfter({"credentials joined", "open /dev/null w+ fails", "credentials wiped",
                          recordLine(2, function, m_name + "():open file failed. ")});
    }

    // A command that is lost never reaches the server.
    void expectLost(const std::string& command)
    {
        scripted::curl().lists = false;
        const Lines lines = journalOf([&] {
            CurlSFtpResponse response;
            EXPECT_THROW((response.*transfer.call)(request, 90), std::bad_alloc);
            EXPECT_EQ(nameOf(CURLE_FAILED_INIT), nameOf(response.m_ErrorCode));
        });
        EXPECT_TRUE(sameLines(
            beginning() + Lines{"list of its own: " + command, "close", "credentials wiped", "handle 1 cleaned up"},
            lines));
    }

    const std::string function;

private:
    const std::string m_name;
    Lines (*const m_with)(const SFtpRequest&, const std::string&);
};

class RenameContract : public RenameDeleteContract
{
protected:
    RenameContract() : RenameDeleteContract(renaming(), "ReNameSFtpFile", renameWith) {}
};

class DeleteContract : public RenameDeleteContract
{
protected:
    DeleteContract() : RenameDeleteContract(deletion(), "DelSFtpFile", deleteWith) {}
};

TEST_F(RenameContract, TakesTheDirectoryAfterTheLastColon)
{
    expectCommand("scheme://host:21/data/", "rename /data/a.bak /data/b.bak");
    expectCommand("scheme://host/data/", "rename //host/data/a.bak //host/data/b.bak");
    expectCommand("scheme://host:21/x:y/", "rename /a.bak /b.bak");
    expectCommand("scheme://host:21/data", "rename /dataa.bak /datab.bak");
    expectCommand("scheme://host:21/", "rename /a.bak /b.bak");
    expectCommand("scheme://host:21/a?b#c%20d/", "rename /a?b#c%20d/a.bak /a?b#c%20d/b.bak");
}

TEST_F(DeleteContract, TakesTheDirectoryAfterTheLastColon)
{
    expectCommand("scheme://host:21/data/", "rm /data/a.bak");
    expectCommand("scheme://host/data/", "rm //host/data/a.bak");
    expectCommand("scheme://host:21/x:y/", "rm /a.bak");
    expectCommand("scheme://host:21/data", "rm /dataa.bak");
}

TEST_F(RenameContract, TakesTheNamesUnchanged)
{
    request.remoteFileName = "a b";
    request.localPath = "c d";
    expectCommand("scheme://host:21/data/", "rename /data/a b /data/c d");
    request.localPath = "";
    expectCommand("scheme://host:21/data/", "rename /data/a b /data/");
}

TEST_F(DeleteContract, TakesTheNameUnchanged)
{
    request.remoteFileName = "a b";
    expectCommand("scheme://host:21/data/", "rm /data/a b");
    request.remoteFileName = "";
    expectCommand("scheme://host:21/data/", "rm /data/");
}

TEST_F(DeleteContract, DiscardsTheListingOfTheVisit)
{
    scripted::curl().perform = [](scripted::Handle& handle) {
        EXPECT_EQ(7U, handle.receive("a.bak\r\n"));
        return CURLE_OK;
    };
    expectSuccess();
}

TEST_F(RenameContract, SetsNoOptionWithoutADirectory) { expectEndedWithoutDirectory(); }
TEST_F(DeleteContract, SetsNoOptionWithoutADirectory) { expectEndedWithoutDirectory(); }

TEST_F(RenameContract, SetsNoOptionIfItsDeviceCannotBeOpened) { expectEndedWithoutDevice(); }
TEST_F(DeleteContract, SetsNoOptionIfItsDeviceCannotBeOpened) { expectEndedWithoutDevice(); }

TEST_F(RenameContract, LosesNoCommandSilently) { expectLost("rename /backup/a.bak /backup/b.bak"); }
TEST_F(DeleteContract, LosesNoCommandSilently) { expectLost("rm /backup/a.bak"); }

} // namespace
