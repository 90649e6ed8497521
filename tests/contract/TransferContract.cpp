#include "contract/TransferContract.h"

#include <new>
#include <ostream>

TransferContract::TransferContract(Transfer tested) : transfer(std::move(tested))
{
    writeFile(request.localPath, "seventeen bytes.\n");
    transfer.aim(request);
}

Lines TransferContract::run(bool expected, int code, uint32_t timeout)
{
    return journalOf([&] {
        CurlSFtpResponse response;
        {
            const memory::Pause pause;
            response.statusCode = 200;
            response.statusText = "kept";
            response.recvData = "kept";
            response.headers["kept"] = {"kept"};
            response.cert = "kept";
            scripted::curl().names[&response] = "the transfer object";
        }
        EXPECT_EQ(expected, (response.*transfer.call)(request, timeout));
        const memory::Pause pause;
        EXPECT_EQ(nameOf(code), nameOf(response.m_ErrorCode));
        EXPECT_EQ(200U, response.statusCode);
        EXPECT_EQ("kept", response.statusText);
        EXPECT_EQ("kept", response.recvData);
        EXPECT_EQ((std::map<std::string, std::set<std::string>>{{"kept", {"kept"}}}), response.headers);
        EXPECT_EQ("kept", response.cert);
    });
}

void TransferContract::expectSuccess(uint32_t timeout)
{
    EXPECT_TRUE(sameLines(transfer.untilPerformed(request) + transfer.success + Lines{"handle 1 cleaned up"},
                          run(true, CURLE_OK, timeout)));
}

void TransferContract::expectFailure(int code)
{
    performGives(code);
    EXPECT_TRUE(sameLines(transfer.untilPerformed(request) + transfer.failure(code) + Lines{"handle 1 cleaned up"},
                          run(transfer.failureIsTrue, code)));
}

void TransferContract::expectEndedAfter(const Lines& beginning)
{
    EXPECT_TRUE(
        sameLines(Lines{"handle 1 made"} + beginning + Lines{"handle 1 cleaned up"}, run(false, CURLE_FAILED_INIT)));
}

void TransferContract::expectFullDiskNoticed()
{
    request.localPath = "/dev/full";
    scripted::curl().perform = [](scripted::Handle& handle) {
        return handle.receive("twenty bytes of data") == 20 ? CURLE_OK : CURLE_WRITE_ERROR;
    };
    EXPECT_TRUE(
        sameLines(transfer.untilPerformed(request) + transfer.failure(CURLE_WRITE_ERROR) + Lines{"handle 1 cleaned up"},
                  run(transfer.failureIsTrue, CURLE_WRITE_ERROR)));
}

void PrintTo(const Transfer& transfer, std::ostream* stream) { *stream << transfer.name; }

namespace {

// What is true of each of them.
class EachTransfer : public TransferContract, public testing::WithParamInterface<Transfer>
{
protected:
    EachTransfer() : TransferContract(GetParam()) {}
};

TEST_P(EachTransfer, MakesTheExpectedCallsOnSuccess) { expectSuccess(); }

TEST_P(EachTransfer, LogsEveryCodeThatLibcurlReturns)
{
    for (int code = 1; code < kEndOfCodes && !HasFailure(); ++code) {
        SCOPED_TRACE(nameOf(code));
        expectFailure(code);
    }
}

TEST_P(EachTransfer, PassesLibcurlACopyOfTheUrl)
{
    expectSuccess();
    expectUrlCopied();
}

TEST_P(EachTransfer, WipesTheCredentialsWhenAnExceptionPasses)
{
    scripted::curl().perform = [](scripted::Handle&) -> CURLcode { throw std::bad_alloc(); };
    const Lines lines = journalOf([&] {
        CurlSFtpResponse response;
        EXPECT_THROW((response.*transfer.call)(request, 90), std::bad_alloc);
        EXPECT_EQ(nameOf(CURLE_FAILED_INIT), nameOf(response.m_ErrorCode));
    });
    // An exception releases resources in the reverse order of their creation.
    EXPECT_TRUE(sameLines({"1 perform", "close", "credentials wiped", "handle 1 cleaned up"}, lastOf(lines, 4)));
}

std::string nameOfCase(const testing::TestParamInfo<Transfer>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Contract, EachTransfer,
                         testing::Values(listing(), download(), renaming(), deletion(), upload()), nameOfCase);

// Only the listing passes its timeout on.
class TransferWithoutTimeout : public EachTransfer
{
};

TEST_P(TransferWithoutTimeout, IgnoresItsTimeout)
{
    for (const uint32_t timeout : {0U, 90U, UINT32_MAX}) {
        SCOPED_TRACE(timeout);
        expectSuccess(timeout);
    }
}

INSTANTIATE_TEST_SUITE_P(Contract, TransferWithoutTimeout,
                         testing::Values(download(), renaming(), deletion(), upload()), nameOfCase);

} // namespace
