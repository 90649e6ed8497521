// The check of an upload's size, against OpenSSH's daemon.
#include "RealServer.h"

#include "support/Process.h"

#include <operation/UploadCheck.h>
#include <output/Listing.h>

#include <algorithm>
#include <iterator>

namespace {

class SshServer : public RealServer
{
protected:
    RemoteSize sizeOf(const std::string& name)
    {
        aimAt(name);
        return askSize(request);
    }
};

TEST_P(SshServer, TellsTheSizeOfAnUpload)
{
    keep("large.bak", std::string(300001, 'x'));
    keep("empty.bak", "");
    keep("with blank.bak", "123");
    EXPECT_EQ(sizeOf("large.bak").bytes, 300001);
    EXPECT_EQ(sizeOf("empty.bak").bytes, 0);
    EXPECT_EQ(sizeOf("with%20blank.bak").bytes, 3);
    const RemoteSize missing = sizeOf("missing.bak");
    EXPECT_EQ(missing.bytes, std::nullopt);
    EXPECT_EQ(missing.whyNot, "asking for it failed: Remote file not found");
}

TEST_P(SshServer, TellsTheSizeToTheCommand)
{
    keep("first.bak", "");
    writeFile(local("file"), std::string(70000, 'x'));
    const TemporaryFile output;
    aimAt("sent.bak");
    ProcessSetup setup;
    setup.words = {SFTPCLIENT_COMMAND, "put", local("file"), request.remotePath, "--user", request.userName, "--json"};
    setup.environment = {{"SFTPCLIENT_PASSWORD", request.password}};
    setup.out = output.path();
    setup.err = "/dev/null";
    EXPECT_EQ(Process(setup).wait(), 0);
    const std::string result = contentOf(output.path());
    EXPECT_NE(result.find("\"bytes\":70000,"), std::string::npos) << result;
    EXPECT_NE(result.find("\"sizeChecked\":true"), std::string::npos) << result;
}

std::vector<Server> thoseWithSsh()
{
    std::vector<Server> those;
    std::copy_if(servers().begin(), servers().end(), std::back_inserter(those),
                 [](const Server& each) { return each.scheme == "sftp"; });
    return those;
}

INSTANTIATE_TEST_SUITE_P(OfDebian, SshServer, testing::ValuesIn(thoseWithSsh()), idOf);

} // namespace
