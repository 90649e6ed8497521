#include "RealServer.h"

#include "support/CurlRelease.h"
#include "support/RandomBytes.h"

#include <algorithm>
#include <iterator>

namespace {

// Small enough that the socket's buffers hold all of it when libcurl closes the connection.
constexpr std::size_t kSize = 200000;

// What is advised against lost ends of uploads: libcurl 8.14.1, over TLS 1.3 here, or a server limited to TLS 1.2.
class Uploads : public RealServer
{
protected:
    Uploads() { speaksNewestTls = isCurl814(); }
};

std::vector<Server> thoseWithImplicitTls()
{
    std::vector<Server> those;
    std::copy_if(servers().begin(), servers().end(), std::back_inserter(those),
                 [](const Server& each) { return each.scheme == "ftps"; });
    return those;
}

TEST_P(Uploads, ArriveWholeAsAdvised)
{
    const std::string content = randomBytes(kSize);
    for (int round = 0; round < 20 && !HasFailure(); ++round) {
        const std::string name = "sent" + std::to_string(round);
        aimAt(name);
        writeFile(request.localPath, content);
        EXPECT_EQ(0, facade.UploadFileToSFtpServer(request, errorText)) << errorText;
        EXPECT_TRUE(contentOf(served(name)) == content) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(OfDebian, Uploads, testing::ValuesIn(thoseWithImplicitTls()), idOf);

} // namespace
