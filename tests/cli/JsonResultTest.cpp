#include "harness/Served.h"

#include <output/JsonResult.h>

#include <nlohmann/json.hpp>

TEST(JsonResult, HasAFieldForEachFact)
{
    Result result;
    result.operation = "get";
    result.url = "ftps://host/x";
    result.code = 67;
    result.text = "Login denied";
    result.bytes = 12;
    result.seconds = 0.5;
    result.attempts = 2;
    EXPECT_EQ(jsonOf(result), R"({"operation":"get","url":"ftps://host/x","code":67,"name":"CURLE_LOGIN_DENIED",)"
                              R"("text":"Login denied","bytes":12,"seconds":0.5,"attempts":2})");
    result.names = {"a", "b"};
    result.sizeChecked = false;
    result.signal = "SIGINT";
    const nlohmann::json object = nlohmann::json::parse(jsonOf(result));
    EXPECT_EQ(object["names"], nlohmann::json({"a", "b"}));
    EXPECT_EQ(object["sizeChecked"], false);
    EXPECT_EQ(object["signal"], "SIGINT");
}

TEST(JsonResult, IsValidForAnyBytes)
{
    Result result;
    std::string name;
    for (int byte = 0; byte < 256; ++byte) {
        name.append(1, static_cast<char>(byte));
    }
    result.names = {name, "\xff\xfe", "\xc3"};
    EXPECT_EQ(nlohmann::json::parse(jsonOf(result))["names"][2], "\xef\xbf\xbd");
}

TEST(JsonResult, HoldsNothingThatATerminalObeys)
{
    Result result;
    result.names = {"\x1b[2J", "\x7f", "\xc2\x9b", "\xc3\xa9"};
    EXPECT_NE(jsonOf(result).find(R"("names":["\u001b[2J","\u007f","\u009b","\u00e9"])"), std::string::npos)
        << jsonOf(result);
}

TEST_F(Served, GivesTheResultAsOneJsonObject)
{
    writeFile(served("file"), "contents");
    serve();
    const CommandResult got = run({"get", url("/file"), "--json"});
    const nlohmann::json object = nlohmann::json::parse(got.out);
    EXPECT_EQ(object["operation"], "get");
    EXPECT_EQ(object["url"], plainUrl("/file"));
    EXPECT_EQ(object["code"], 0);
    EXPECT_EQ(object["name"], "CURLE_OK");
    EXPECT_EQ(object["text"], "No error");
    EXPECT_EQ(object["bytes"], 8);
    EXPECT_GT(object["seconds"], 0.0);
    EXPECT_EQ(object["attempts"], 1);
    EXPECT_EQ(lastLine(got.err), "get: 0 No error");

    EXPECT_EQ(nlohmann::json::parse(run({"put", "file", url("/sent"), "--json"}).out)["sizeChecked"], true);
    EXPECT_EQ(nlohmann::json::parse(run({"ls", url(), "--json"}).out)["names"], nlohmann::json({"file", "sent"}));
    const nlohmann::json failed = nlohmann::json::parse(run({"ls", url("/missing/"), "--json"}).out);
    EXPECT_EQ(failed["name"], "CURLE_REMOTE_FILE_NOT_FOUND");
    EXPECT_EQ(failed.count("names"), 0U);
}
