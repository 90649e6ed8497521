#ifndef SFTPCLIENT_ISFTPRESPONSE_H
#define SFTPCLIENT_ISFTPRESPONSE_H

#include <string>

/// The result of one operation, created by `ISFtpClient`.
///
/// Passed as `boost::shared_ptr<ISFtpResponse>`; an empty pointer means that no response could be created, and never
/// success. A response holds a libcurl handle until its last owner releases it, so keep none longer than needed.
///
/// One thread at a time may use a response, not necessarily the one that ran the operation. Its records carry the
/// request identifier of the calling thread. Any thread may release it; that can take a while, because libcurl then
/// sends QUIT to the server and waits for the reply.
class __attribute__((visibility("default"))) ISFtpResponse
{
public:
    virtual ~ISFtpResponse();

    /// The libcurl result code of the operation; 0 is success. Two values need an explanation:
    ///  - libcurl's 9 (access denied) is reported as 78 (no such remote file);
    ///  - 2 also means that there was no transfer, for a local reason given in the log.
    virtual int GetErrCode() = 0;

    /// libcurl's text for the result, or "UnKown error" if libcurl has none. It belongs to libcurl's own code: if
    /// `GetErrCode` reports a 9 as 78, the text is still that of denied access. Writes a log record.
    virtual std::string GetErrString() = 0;
};

#endif
