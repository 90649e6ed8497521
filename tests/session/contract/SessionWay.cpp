#include "SessionWay.h"

#include <filesystem>
#include <new>

namespace {

constexpr const char* kBefore = "seventeen bytes.\n";

} // namespace

std::ostream& operator<<(std::ostream& stream, const Way& way) { return stream << way.call << " " << way.scheme; }

std::vector<Way> allWays()
{
    std::vector<Way> ways;
    for (const OperationCall& call : operationCalls()) {
        for (const char* const scheme : {"ftp", "ftps", "sftp"}) {
            if (call.function != "ReadChecksum" || scheme != std::string("sftp")) { // which has none
                ways.push_back({call, scheme});
            }
        }
    }
    return ways;
}

std::string nameOfWay(const testing::TestParamInfo<Way>& parameter)
{
    return parameter.param.call.function + "_" + parameter.param.scheme;
}

SessionWay::SessionWay()
{
    const std::string& function = GetParam().call.function;
    const bool isDirectory = function.find("List") == 0 || function == "ReNameSFtpFile" || function == "DelSFtpFile";
    request.remotePath = GetParam().scheme + "://server/backup/" + (isDirectory ? "" : "a.bak");
    if (function == "ReNameSFtpFile") {
        request.localPath = "b.bak";
    }
    features = {"MFMT", "HASH SHA-256*"};
    content = "-rw-r--r-- 1 u g 7 Jan  1 00:00 a.bak\n";
    options.knownHostsFile = "known";
    options.pinnedPublicKey = "sha256//AAAA";
    options.clientCertificate = "a certificate";
    options.clientKey = "a key";
    options.callTimeout = std::chrono::hours(1);
}

void SessionWay::prepare()
{
    std::filesystem::remove(path("local"));
    writeFile(path("local"), kBefore);
}

int SessionWay::resultOf(SFtpSession& session)
{
    try {
        return GetParam().call.run(session, request, errorText);
    } catch (const std::bad_alloc&) {
        return kThrown;
    }
}

int SessionWay::again(SFtpSession& session)
{
    std::filesystem::remove(path("local"));
    if (GetParam().call.function == "UploadFileToSFtpServer") {
        writeFile(path("local"), kBefore);
    }
    return resultOf(session);
}

void SessionWay::expectNothingDamaged(bool mayBeDone) const
{
    const std::string there = contentOf(path("local"));
    EXPECT_TRUE(there == kBefore || (mayBeDone && there == content)) << there;
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(path("")), {})) << "a temporary file is left";
}
