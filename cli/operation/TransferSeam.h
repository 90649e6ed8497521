#ifndef SFTPCLIENT_CLI_OPERATION_TRANSFERSEAM_H
#define SFTPCLIENT_CLI_OPERATION_TRANSFERSEAM_H

#include <curl/curl.h>

#include <chrono>
#include <string_view>

/// The bytes of a transfer so far, and what they will come to; 0 where that is unknown or nothing goes that way.
struct TransferAmounts
{
    curl_off_t received = 0;
    curl_off_t toReceive = 0;
    curl_off_t sent = 0;
    curl_off_t toSend = 0;
};

/// Reads along in the transfers of a session. Nothing may be thrown.
class TranscriptObserver
{
public:
    virtual ~TranscriptObserver() = default;

    /// A transfer is about to begin.
    virtual void transferBegins() = 0;

    /// What libcurl says, hears or notes, as CURLOPT_DEBUGFUNCTION gets it: lines, or pieces of the data.
    virtual void traced(curl_infotype type, std::string_view text) = 0;
};

/// Sees every transfer that libcurl makes for SFtpClient, and rules it. Nothing may be thrown.
class TransferObserver
{
public:
    virtual ~TransferObserver() = default;

    /// A transfer is about to begin. How long libcurl may take to connect and log in.
    virtual std::chrono::seconds begins() = 0;

    /// Connection and login are done.
    virtual void connected() = 0;

    /// What libcurl says, hears or notes, as CURLOPT_DEBUGFUNCTION gets it: lines, or pieces of the data.
    virtual void traced(curl_infotype type, std::string_view text) = 0;

    /// Called about once a second and with every piece of data, from connecting to QUIT, but not during a TLS
    /// handshake. False ends the transfer, with CURLE_ABORTED_BY_CALLBACK.
    virtual bool goesOn(const TransferAmounts& amounts) = 0;

    /// The transfer is over. The result that its caller is to get: `result`, or another one that says it better.
    virtual CURLcode ended(CURLcode result, const TransferAmounts& amounts) = 0;
};

/// Lets `observer` see the transfers as long as this object lives.
/// REQUIRES: one at a time; all handles that made a transfer meanwhile are cleaned up before it goes.
class ObservedTransfers
{
public:
    explicit ObservedTransfers(TransferObserver& observer);
    ~ObservedTransfers();
    ObservedTransfers(const ObservedTransfers&) = delete;
    ObservedTransfers& operator=(const ObservedTransfers&) = delete;
};

/// Lets `observer` read along in the sessions' transfers as long as this object lives, which the sessions do not
/// outlive. REQUIRES: one at a time; calls of sessions in one thread alone.
class ObservedSessions
{
public:
    explicit ObservedSessions(TranscriptObserver& observer);
    ~ObservedSessions();
    ObservedSessions(const ObservedSessions&) = delete;
    ObservedSessions& operator=(const ObservedSessions&) = delete;
};

#endif
