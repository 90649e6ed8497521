#include "contract/TransferContract.h"

namespace {

constexpr const char* kFunction = "CurlSFtpResponse::Listsftpdir";

void aim(SFtpRequest& /*request*/) {}

Lines untilPerformedWith(const SFtpRequest& request, const Lines& timeout)
{
    return Lines{"handle 1 made", "credentials joined", "open " + request.localPath + " wr+", "unbuffered"} +
           tlsStep() + Lines{"1 URL = ftp://server:2121/backup/", kPort, "1 USERPWD = operator:correct horse battery"} +
           timeout +
           Lines{"1 DIRLISTONLY = 1", "1 WRITEFUNCTION = sftp_write_data", "1 WRITEDATA = stream", "1 perform",
                 "credentials wiped"};
}

Lines untilPerformed(const SFtpRequest& request)
{
    return untilPerformedWith(request, {"1 FTP_RESPONSE_TIMEOUT = 90"});
}

Lines failure(int code)
{
    return {recordLine(4, kFunction, "Listsftpdir() list dir failed.code:|" + std::to_string(code)), "close"};
}

} // namespace

Transfer listing()
{
    const Lines success = {"close", recordLine(2, kFunction, "Listsftpdir():end ")};
    return {"Listing", &CurlSFtpResponse::Listsftpdir, aim, untilPerformed, success, failure};
}

namespace {

class ListingContract : public TransferContract
{
protected:
    ListingContract() : TransferContract(listing()) {}

    void expectTimeout(uint32_t seconds, const Lines& option)
    {
        EXPECT_TRUE(sameLines(untilPerformedWith(request, option) + transfer.success + Lines{"handle 1 cleaned up"},
                              run(true, CURLE_OK, seconds)));
    }
};

TEST_F(ListingContract, WritesTheNamesAsTheyArrive)
{
    scripted::curl().perform = [&](scripted::Handle& handle) {
        const memory::Pause pause;
        handle.receive("a.bak\r\n");
        EXPECT_EQ("a.bak\r\n", contentOf(request.localPath)) << "each block reaches the file at once";
        handle.receive("b.bak\r\n");
        return CURLE_OK;
    };
    expectSuccess();
    EXPECT_EQ("a.bak\r\nb.bak\r\n", contentOf(request.localPath));
}

TEST_F(ListingContract, PassesItsTimeoutOnInSecondsUnlessItIsZero)
{
    expectTimeout(0, {});
    expectTimeout(1, {"1 FTP_RESPONSE_TIMEOUT = 1"});
    expectTimeout(UINT32_MAX, {"1 FTP_RESPONSE_TIMEOUT = " + asLong(UINT32_MAX)});
}

TEST_F(ListingContract, EmptiesAnOldFileEvenWhenItFails)
{
    expectFailure(CURLE_LOGIN_DENIED);
    EXPECT_EQ("", contentOf(request.localPath));
}

TEST_F(ListingContract, SetsNoOptionIfTheFileCannotBeOpened)
{
    request.localPath = path("no-folder/local");
    expectEndedAfter({"credentials joined", "open " + request.localPath + " wr+ fails", "credentials wiped",
                      recordLine(4, kFunction, "Listsftpdir():Open local file file failed.")});
}

TEST_F(ListingContract, DetectsAFullDiskAtTheFirstShortWrite) { expectFullDiskNoticed(); }

} // namespace
