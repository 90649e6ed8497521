#include "contract/Contract.h"

#include <openssl/crypto.h>

std::string recordLine(int level, const std::string& function, const std::string& pieces)
{
    return "log " + std::to_string(level) + " SFtpClient 77 " + function + "(): 0|" + pieces + "|";
}

Lines tlsStep()
{
    return {
        "1 FTPSSLAUTH = 0",
        "1 USE_SSL = 3",
        "1 SSLCERTTYPE = PEM",
        "log 1 SFtpClient 0 sftpSetCertTmp(): 0|Establish SSL with cert|",
        "1 SSL_VERIFYPEER = 1",
        "1 SSL_CTX_DATA = the request's caCert",
        "1 SSL_CTX_FUNCTION = sftp_sslCtx_function",
        "1 SSL_VERIFYHOST = 0",
    };
}

Contract::Contract()
{
    scripted::curl() = {};
    // It reads its configuration once, and no case is to note that.
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CONFIG, nullptr);
    recorded::files() = {};
    recorded::openSsl() = {};
    recording::reset();

    request.remotePath = "ftp://server:2121/backup/";
    request.remoteFileName = "a.bak";
    request.localPath = path("local");
    request.userName = "operator";
    request.password = kPassword;
    request.caCert = "the certificate";
    request.port = kRequestPort;
    scripted::curl().names[&request.caCert] = "the request's caCert";
}

Lines Contract::journalOf(const std::function<void()>& piece)
{
    scripted::curl().made = 0;
    recorded::openSsl().buffers = 0;
    journal::clear();
    const memory::Watch watch(kPassword);
    piece();
    const memory::Pause pause;
    return journal::take();
}

void Contract::performGives(int code)
{
    scripted::curl().perform = [code](scripted::Handle&) { return static_cast<CURLcode>(code); };
}

void Contract::expectUrlCopied() const
{
    EXPECT_EQ(request.remotePath, scripted::curl().url);
    EXPECT_NE(static_cast<const void*>(request.remotePath.c_str()), scripted::curl().urlAt);
}
