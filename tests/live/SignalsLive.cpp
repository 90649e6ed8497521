// Which operations let libcurl ignore SIGPIPE for the whole process, the end of the response included.
#include "support/Live.h"
#include "support/NextFunction.h"

#include <csignal>
#include <filesystem>

namespace {

bool setAside = false;

class SignalsLive : public Live
{
protected:
    SignalsLive()
    {
        std::filesystem::create_directory(served("dir"));
        writeFile(served("dir/a.bak"), "the content");
        serve();
        request.remoteFileName = "a.bak";
    }

    template <typename Operation>
    bool setsAside(const std::string& path, const Operation& operation)
    {
        request.remotePath = url(path);
        setAside = false;
        EXPECT_EQ(0, operation());
        return setAside;
    }

    bool setsAside(const std::string& path,
                   boost::shared_ptr<ISFtpResponse> (ISFtpClient::*transfer)(const SFtpRequest&, uint32_t))
    {
        return setsAside(path, [&] { return (*ISFtpClient::CreateClient().*transfer)(request, 90)->GetErrCode(); });
    }
};

TEST_F(SignalsLive, SomeOperationsLeaveSigpipeAlone)
{
    EXPECT_FALSE(setsAside("/dir/", [&] { return testConnection(); }));
    EXPECT_FALSE(setsAside("/dir/a.bak", &ISFtpClient::DownLoadSFtpFile));
    EXPECT_FALSE(setsAside("/dir/up.bak", &ISFtpClient::UploadFileToSFtpServer));
}

TEST_F(SignalsLive, OtherOperationsIgnoreSigpipeMeanwhile)
{
    EXPECT_TRUE(setsAside("/dir/a.bak", [&] { return facade.CheckFileSizeBeforeDownload(request) ? 0 : -1; }));
    EXPECT_TRUE(setsAside("/dir/a.bak", [&] { return facade.DownLoadSFtpFile(request, errorText); }));
    EXPECT_TRUE(setsAside("/dir/", &ISFtpClient::Listsftpdir));
    request.localPath = "b.bak";
    EXPECT_TRUE(setsAside("/dir/", &ISFtpClient::ReNameSFtpFile));
    request.remoteFileName = "b.bak";
    EXPECT_TRUE(setsAside("/dir/", &ISFtpClient::DelSFtpFile));
}

} // namespace

// Replaces the C library's for libcurl.
extern "C" int sigaction(int signal, const struct sigaction* action, struct sigaction* before) noexcept
{
    static auto* const next = nextFunction<int(int, const struct sigaction*, struct sigaction*)>("sigaction");
    setAside = setAside || (signal == SIGPIPE && action != nullptr && action->sa_handler == SIG_IGN);
    return next(signal, action, before);
}
