#ifndef SERVERTEST_SERVERTEST_H
#define SERVERTEST_SERVERTEST_H

#include "CurlClient.h"
#include "RawClient.h"

#include "support/RandomBytes.h"
#include "support/ServerFixture.h"

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The base of the test server's own tests: clients for it.
class ServerTest : public ServerFixture
{
protected:
    ServerTest() { config.password = "secret"; }

    /// A client that has logged in in the clear.
    std::unique_ptr<RawClient> login();

    CurlClient client() { return CurlClient(config, server->port(), authority.certificatePem()); }

    /// The transcript of the only session, without the lines of `login`.
    Lines afterLogin();

    /// Sends each command after a login, and compares the transcript with the replies.
    testing::AssertionResult goesLike(const std::vector<std::pair<std::string, std::string>>& dialogue);
};

#endif
