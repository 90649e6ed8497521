#ifndef CONTRACT_TRANSFERCONTRACT_H
#define CONTRACT_TRANSFERCONTRACT_H

#include "contract/Contract.h"

#include <cstdint>
#include <iosfwd>

/// What an operation of a transfer object does to the world.
struct Transfer
{
    const char* name;
    bool (CurlSFtpResponse::*call)(const SFtpRequest&, uint32_t);
    void (*aim)(SFtpRequest&);
    Lines (*untilPerformed)(const SFtpRequest&); ///< of that request
    Lines success;                               ///< and then
    Lines (*failure)(int code);
    bool failureIsTrue = false; ///< what it returns for a transfer that failed
};

void PrintTo(const Transfer& transfer, std::ostream* stream);

Transfer listing();
Transfer download();
Transfer renaming();
Transfer deletion();
Transfer upload();

/// The base of the tests of one such operation.
class TransferContract : public Contract
{
protected:
    explicit TransferContract(Transfer tested);

    /// Runs it and returns its journal. Fails if it changes fields of the transfer object that no operation may touch.
    Lines run(bool expected, int code, uint32_t timeout = 90);

    /// The whole journal of a run that succeeds, or that ends with one of libcurl's codes.
    void expectSuccess(uint32_t timeout = 90);
    void expectFailure(int code);

    /// The whole journal of a run that ends with CURLE_FAILED_INIT before any option is set.
    void expectEndedAfter(const Lines& beginning);

    /// The whole journal of a run whose first bytes do not fit on the disk.
    void expectFullDiskNoticed();

    const Transfer transfer;
};

#endif
