#include "harness/ServerTest.h"

ServerTest::ServerTest()
{
    config.root = folder.path() / "served";
    std::filesystem::create_directory(config.root);
    config.password = "secret";
    config.certificate = authority.issue();
}

ServerTest::~ServerTest() = default;

std::unique_ptr<RawClient> ServerTest::login()
{
    auto client = std::make_unique<RawClient>(server->port());
    EXPECT_EQ("220 ready", client->line());
    EXPECT_EQ("331 password please", client->ask("USER backup"));
    EXPECT_EQ("230 logged in", client->ask("PASS secret"));
    return client;
}

Lines ServerTest::afterLogin()
{
    const auto sessions = server->transcripts();
    if (sessions.size() != 1 || sessions[0].size() < 5) {
        ADD_FAILURE() << "not one session with a login";
        return {};
    }
    return {sessions[0].begin() + 5, sessions[0].end()};
}
