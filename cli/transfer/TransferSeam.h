#ifndef SFTPCLIENT_CLI_TRANSFER_TRANSFERSEAM_H
#define SFTPCLIENT_CLI_TRANSFER_TRANSFERSEAM_H

#include <curl/curl.h>

#include <string_view>

/// The bytes of a transfer so far, and what they will come to; 0 where that is unknown or nothing goes that way.
struct TransferAmounts
{
    curl_off_t received = 0;
    curl_off_t toReceive = 0;
    curl_off_t sent = 0;
    curl_off_t toSend = 0;
};

/// Sees every transfer that libcurl makes for this process, the library's own included. Nothing may be thrown.
class TransferObserver
{
public:
    virtual ~TransferObserver() = default;

    /// A transfer is about to begin. Whether libcurl shall say what goes over its connections: see `traced`.
    virtual bool begins() = 0;

    /// A line, or more, of what libcurl says, hears or notes, as CURLOPT_DEBUGFUNCTION gets it, but for the data.
    /// A handle that the library made talkative comes here even though nothing was asked for.
    virtual void traced(curl_infotype type, std::string_view text) = 0;

    /// Called about once a second and with every piece of data, while connecting, too. False ends the transfer, with
    /// CURLE_ABORTED_BY_CALLBACK.
    virtual bool goesOn(const TransferAmounts& amounts) = 0;

    /// The transfer is over.
    virtual void ended(CURLcode result, const TransferAmounts& amounts) = 0;
};

/// Lets `observer` see the transfers as long as this object lives.
/// REQUIRES: one at a time; all handles that made a transfer meanwhile are cleaned up before it goes, for they say
/// goodbye to their servers then.
class ObservedTransfers
{
public:
    explicit ObservedTransfers(TransferObserver& observer);
    ~ObservedTransfers();
    ObservedTransfers(const ObservedTransfers&) = delete;
    ObservedTransfers& operator=(const ObservedTransfers&) = delete;
};

#endif
