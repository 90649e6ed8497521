#include "harness/Disk.h"

#include "support/OpenHandles.h"

#include <filesystem>
#include <set>

namespace {

// Each open descriptor and what it leads to.
std::set<std::string> openDescriptors()
{
    std::set<std::string> descriptors;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        const std::string target = std::filesystem::read_symlink(descriptor);
        // Without the one that reads this folder.
        if (target.rfind("/proc/", 0) != 0) {
            descriptors.insert(descriptor.path().filename().string() + " " + target);
        }
    }
    return descriptors;
}

std::string textRecord(const std::string& text)
{
    return "4 CurlSFtpResponse::GetErrString(): Get error string: " + text;
}

std::string facadesUploadRecord(const std::string& text)
{
    return "4 SFtpClient::UploadFileToSFtpServer(): Send SFtp request occur network error. Error  is " + text;
}

} // namespace

std::string Disk::run(Call call, const std::string& path)
{
    request.remotePath = url(path);
    const std::set<std::string> before = openDescriptors();
    std::string result = nameOf((facade.*call)(request, errorText));
    // The server would wait for a handle that was not cleaned up.
    if (openHandles() != 0) {
        ADD_FAILURE() << openHandles() << " libcurl handles were not cleaned up";
        return result;
    }
    sessions();
    EXPECT_EQ(before, openDescriptors());
    return result;
}

Lines Disk::downloadFailed(const std::string& why, const std::string& text)
{
    return {"4 CurlSFtpResponse::DownLoadSFtpFile(): " + why, textRecord(text), textRecord(text),
            "4 SFtpClient::DownLoadSFtpFile(): DownLoadSFtpFile(): Send SFtp request occur network error. Error  is " +
                text};
}

Lines Disk::listFailed(const std::string& why, const std::string& text)
{
    return {"4 CurlSFtpResponse::Listsftpdir(): " + why, textRecord(text), textRecord(text),
            "4 SFtpClient::Listsftpdir(): Listsftpdir():Send SFtp request occur network error. Error  is " + text};
}

Lines Disk::uploadNotOpened()
{
    return {"4 CurlSFtpResponse::UploadFileToSFtpServer(): Open local file file failed.", textRecord(kNotOpened),
            textRecord(kNotOpened), facadesUploadRecord(kNotOpened)};
}

Lines Disk::uploadNotWhole()
{
    const std::string text = tooShortText();
    return {textRecord(text),
            "4 CurlSFtpResponse::UploadFileToSFtpServer(): Perform upload file failed, m_ErrorCodeis " +
                std::string(isCurl814() ? "26" : "18") + ", errorString is" + text,
            textRecord(text), textRecord(text), facadesUploadRecord(text)};
}
