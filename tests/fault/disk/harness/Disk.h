#ifndef DISK_HARNESS_DISK_H
#define DISK_HARNESS_DISK_H

#include "support/Codes.h"
#include "support/CurlRelease.h"
#include "support/Live.h"

#include <string>

/// The base of the tests with local files that cannot be opened, read or written to the end. Of each operation is
/// asserted that it releases its stream and its libcurl handle.
class Disk : public Live
{
protected:
    std::string download() { return run(&SFtpClient::DownLoadSFtpFile, "/a.bak"); }
    std::string list() { return run(&SFtpClient::Listsftpdir, "/"); }
    std::string upload() { return run(&SFtpClient::UploadFileToSFtpServer, "/sent.bak"); }

    // All the records of a failed operation, from the one with the reason on.
    static Lines downloadFailed(const std::string& why, const std::string& text);
    static Lines listFailed(const std::string& why, const std::string& text);
    static Lines uploadNotOpened();
    static Lines uploadNotWhole();

    // What an upload ends with if its file is shorter than its size.
    static const char* tooShort() { return isCurl814() ? "CURLE_READ_ERROR" : "CURLE_PARTIAL_FILE"; }
    static const char* tooShortText() { return isCurl814() ? kNotRead : kPartial; }

    static constexpr const char* kNotOpened = "Failed initialization";
    static constexpr const char* kNotRead = "Failed to open/read local data from file/application";
    static constexpr const char* kPartial = "Transferred a partial file";
    static constexpr const char* kNotWritten = "Failed writing received data to disk/application";

private:
    using Call = int (SFtpClient::*)(const SFtpRequest&, std::string&);

    std::string run(Call call, const std::string& path);
};

#endif
