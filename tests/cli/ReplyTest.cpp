#include "harness/Served.h"

#include <output/ResultLine.h>

#include <nlohmann/json.hpp>

namespace {

/// What the server sends instead of its own replies, and what the command is to report.
struct Refusal
{
    std::string fault;
    Words form;
    std::string result; // the last line
    std::string reply;
    std::string hint; // its beginning
};

class Replies : public ServedAsHost
{
protected:
    void expect(const Refusal& refusal)
    {
        writeFile(local("file"), "contents");
        writeFile(served("file"), "contents");
        serve({refusal.fault});
        Words form = refusal.form;
        for (std::string& word : form) {
            word = word.front() == '/' ? url(word) : word;
        }
        form.emplace_back("--json");
        const ProgramResult result = run(form);
        EXPECT_EQ(refusal.result, lastLine(result.err));
        EXPECT_TRUE(holds("\nhint: " + refusal.hint, result.err));
        const nlohmann::json object = nlohmann::json::parse(result.out);
        EXPECT_EQ(refusal.reply, object.value("reply", "")) << result.out;
        EXPECT_EQ(0U, object["hint"].get<std::string>().find(refusal.hint)) << result.out;
    }
};

} // namespace

TEST_F(Replies, AppearInTheResult)
{
    const std::string last = " (the server's last reply: ";
    expect({"STOR=reply:552 Quota exceeded",
            {"put", "file", "/sent"},
            "put: 25 Upload failed (at start/before it took off)" + last + "552 Quota exceeded)",
            "552 Quota exceeded",
            "the server has no space left for this user; "});
    expect({"DONE=reply:452-Disk\\r\\n452 full",
            {"put", "file", "/sent"},
            "put: 18 Transferred a partial file" + last + "452 Disk full)",
            "452 Disk full",
            "the server has no space left for this user; "});
    expect({"STOR=reply:550 no \x1b[2J",
            {"put", "file", "/sent"},
            "put: 25 Upload failed (at start/before it took off)" + last + "550 no \\x1b[2J)",
            "550 no \x1b[2J",
            "the server refuses to write this file; "});
    expect({"GREETING=reply:421 too many",
            {"test", "/"},
            "test: 28 Timeout was reached" + last + "421 too many)",
            "421 too many",
            "the server ends the connection, or takes no more of them; "});
    expect({"rm=reply:500 what?",
            {"rm", "/", "x"},
            "rm: 21 Quote command returned error" + last + "500 what?)",
            "500 what?",
            "the server does not know the command; "});
    expect({"1/PASS=reply:530 gone",
            {"get", "/file", "got"},
            "get: -1 the size check before the download failed: 67 Login denied" + last + "530 gone)",
            "530 gone",
            "check user and password; "});
}

TEST_F(Replies, AreReportedWithoutTheReplyToQuit)
{
    expect({"QUIT=reply:500 stay",
            {"ls", "/missing/"},
            "ls: 78 Access denied to remote resource (the server's last reply: 550 no such directory)",
            "550 no such directory",
            "there is no such path for this user; "});
}

TEST_F(Replies, AreNotReportedAfterSuccess)
{
    serve();
    const ProgramResult result = run({"test", url(), "--json"});
    EXPECT_EQ("test: 0 No error", lastLine(result.err));
    EXPECT_EQ(0U, nlohmann::json::parse(result.out).count("reply"));
}

TEST_F(Replies, AreReportedBeforeTheNextTry)
{
    serve({"GREETING=reply:421 too many"});
    const ProgramResult result = run({"ls", url(), "--retry=1", "--retry-delay=0", "--quiet"});
    EXPECT_TRUE(holds("\nls: 28 Timeout was reached (the server's last reply: 421 too many); trying again in 0 s\n",
                      result.err));
}

TEST(ResultLine, QuotesTheReplyOnOneLine)
{
    Result result;
    result.operation = "put";
    result.code = 25;
    result.text = "no";
    EXPECT_EQ("put: 25 no", lineOf(result));
    result.reply = "552 a\r\nb";
    EXPECT_EQ("put: 25 no (the server's last reply: 552 a\\r\\nb)", lineOf(result));
}
