#include "ServerTest.h"

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
    const auto all = sessions();
    if (all.size() != 1 || all[0].size() < 5) {
        ADD_FAILURE() << "not one session with a login";
        return {};
    }
    return {all[0].begin() + 5, all[0].end()};
}

testing::AssertionResult ServerTest::goesLike(const std::vector<std::pair<std::string, std::string>>& dialogue)
{
    Lines expected;
    serve();
    {
        const auto client = login();
        for (const auto& [command, reply] : dialogue) {
            client->ask(command);
            expected = std::move(expected) + Lines{"> " + command, "< " + reply};
        }
        client->finish();
        client->rest();
    }
    return sameLines(expected, afterLogin());
}
