#include "ISFtpClient.h"

#include "log/LogStatement.h"
#include "transfer/CurlSFtpClient.h"

#include <exception>

ISFtpClient::~ISFtpClient() = default;

boost::shared_ptr<ISFtpClient> ISFtpClient::CreateClient()
{
    return boost::shared_ptr<ISFtpClient>(new CurlSFtpClient);
}

// Named, because clang's signature text would put the "*" of a plain pointer before the function's name in the record.
using ClientPointer = ISFtpClient*;

ClientPointer ISFtpClient::GetInstance()
{
    try {
        return new CurlSFtpClient;
    } catch (const std::exception& error) {
        SFTP_LOG(kLogFailure, "Create  CurlSFtpClient object failed." << error.what());
        return nullptr;
    }
}

void ISFtpClient::ReleaseInstance(ISFtpClient* instance) { delete instance; }
