#ifndef SFTPCLIENT_CLI_OPERATION_TRANSFERSEAM_H
#define SFTPCLIENT_CLI_OPERATION_TRANSFERSEAM_H

#include <curl/curl.h>

#include <chrono>
#include <string_view>

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
    /// handshake: how many bytes have moved, and what they will come to, or 0. False ends the transfer, with
    /// CURLE_ABORTED_BY_CALLBACK.
    virtual bool goesOn(curl_off_t bytes, curl_off_t total) = 0;

    /// The transfer is over and has moved so many bytes. The result that its caller is to get: `result`, or another one
    /// that says it better.
    virtual CURLcode ended(CURLcode result, curl_off_t bytes) = 0;
};

/// Lets `observer` see transfers as long as this object lives. REQUIRES: one at a time for each kind of observer.
template <typename Observer>
class Observed
{
public:
    explicit Observed(Observer& observer) { current = &observer; }
    ~Observed() { current = nullptr; }
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    // libcurl's functions have no argument that could carry it.
    static inline Observer* current = nullptr;
};

/// REQUIRES: all handles that made a transfer meanwhile are cleaned up before it goes.
using ObservedTransfers = Observed<TransferObserver>;

/// REQUIRES: sessions do not outlive it, and their calls are in one thread alone.
using ObservedSessions = Observed<TranscriptObserver>;

#endif
