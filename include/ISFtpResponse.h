#ifndef SFTPCLIENT_ISFTPRESPONSE_H
#define SFTPCLIENT_ISFTPRESPONSE_H

#include <string>

/// The result of one operation, made by `ISFtpClient`.
///
/// Travels as `boost::shared_ptr<ISFtpResponse>`; an empty pointer means that no response could be made and never
/// means success. A response holds a libcurl handle until its last owner lets go, so keep none longer than needed.
///
/// One thread at a time may use a response, and that may be another thread than the one that ran the operation: a
/// response can be handed on. Its records carry the request identifier of the thread that calls. The last owner may let
/// go on any thread; that can take a while, for libcurl then says goodbye to the server.
class __attribute__((visibility("default"))) ISFtpResponse
{
public:
    virtual ~ISFtpResponse();

    /// The libcurl result code of the operation; 0 is success. Two values need a word:
    ///  - libcurl's 9 (access denied) is reported as 78 (no such remote file);
    ///  - 2 also means that no transfer took place, for a local reason that the log tells.
    virtual int GetErrCode() = 0;

    /// libcurl's text for the result, or "UnKown error" where libcurl has none. It belongs to the code that libcurl
    /// gave: for a 9 that `GetErrCode` reports as 78 the text still speaks of denied access. Writes a log record.
    virtual std::string GetErrString() = 0;
};

#endif
