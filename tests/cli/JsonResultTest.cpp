#include "harness/Served.h"

#include <base/PercentCode.h>
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
    EXPECT_EQ(R"({"operation":"get","url":"ftps://host/x","code":67,"name":"CURLE_LOGIN_DENIED",)"
              R"("text":"Login denied","bytes":12,"seconds":0.5,"attempts":2})",
              jsonOf(result));
    result.listing = "a\nb\r\n";
    result.sizeChecked = false;
    result.signal = "SIGINT";
    const nlohmann::json object = nlohmann::json::parse(jsonOf(result));
    EXPECT_EQ(nlohmann::json({"a", "b"}), object["names"]);
    EXPECT_EQ(false, object["sizeChecked"]);
    EXPECT_EQ("SIGINT", object["signal"]);
}

TEST(JsonResult, IsValidForAnyBytes)
{
    Result result;
    std::string name;
    for (int byte = 0; byte < 256; ++byte) {
        name.append(1, static_cast<char>(byte));
    }
    result.entries = {{name, EntryKind::File, -1, std::nullopt}};
    result.listing = "a b\n\xff/\xfe\n\xc3";
    const nlohmann::json object = nlohmann::json::parse(jsonOf(result));
    EXPECT_EQ("\xef\xbf\xbd", object["names"][2]);
    EXPECT_EQ(nlohmann::json({"a%20b", "%FF%2F%FE", "%C3"}), object["encodedNames"]);
    EXPECT_EQ(name, percentDecoded(object["entries"][0]["encodedName"]));
}

TEST(JsonResult, ContainsNoTerminalControls)
{
    Result result;
    result.listing = "\x1b[2J\n\x7f\n\xc2\x9b\n\xc3\xa9\n";
    EXPECT_TRUE(holds(R"("names":["\u001b[2J","\u007f","\u009b","\u00e9"])", jsonOf(result)));
}

TEST(JsonResult, HasTheFieldsOfEntries)
{
    using Clock = std::chrono::system_clock;
    Result result;
    result.entries = {{"a", EntryKind::File, 18, Clock::from_time_t(1767225600)},
                      {"\xff", EntryKind::Directory, -1, std::nullopt}};
    result.entry = RemoteEntry{"b", EntryKind::Other, -1, std::nullopt};
    EXPECT_TRUE(holds(R"("entries":[{"name":"a","kind":"file","size":18,"modified":"2026-01-01T00:00:00Z"},)"
                      R"({"name":"\ufffd","kind":"directory","encodedName":"%FF"}],)"
                      R"("entry":{"name":"b","kind":"other"}})",
                      jsonOf(result)));
}

TEST_F(Served, PrintsTheResultAsOneJsonObject)
{
    writeFile(served("file"), "contents");
    serve();
    const ProgramResult got = run({"get", url("/file"), "--json"});
    const nlohmann::json object = nlohmann::json::parse(got.out);
    EXPECT_EQ("get", object["operation"]);
    EXPECT_EQ(plainUrl("/file"), object["url"]);
    EXPECT_EQ(0, object["code"]);
    EXPECT_EQ("CURLE_OK", object["name"]);
    EXPECT_EQ("No error", object["text"]);
    EXPECT_EQ(8, object["bytes"]);
    EXPECT_GT(object["seconds"], 0.0);
    EXPECT_EQ(1, object["attempts"]);
    EXPECT_EQ("get: 0 No error", lastLine(got.err));

    EXPECT_EQ(true, nlohmann::json::parse(run({"put", "file", url("/sent"), "--json"}).out)["sizeChecked"]);
    EXPECT_EQ(nlohmann::json({"file", "sent"}), nlohmann::json::parse(run({"ls", url(), "--json"}).out)["names"]);
    const nlohmann::json failed = nlohmann::json::parse(run({"ls", url("/missing/"), "--json"}).out);
    EXPECT_EQ("CURLE_REMOTE_FILE_NOT_FOUND", failed["name"]);
    EXPECT_EQ(0U, failed.count("names"));
}
