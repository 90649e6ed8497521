#include "doctor/Renderers.h"
#include "support/Lines.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using doctor::Outlook;
using doctor::Prediction;

const std::vector<Prediction> kPredictions = {
    {{Outlook::Works, 0, "", ""}, "download", {Outlook::Works, 0, "", ""}},
    {{Outlook::Fails, 67, "because", "Do this."}, "upload", {Outlook::Works, 0, "", ""}},
    {{Outlook::Unknown, std::nullopt, "perhaps", "Do that."}, "rename", {Outlook::Fails, 60, "so", "Do that."}},
    {{Outlook::Fails, std::nullopt, "because", "Do this."}, "delete", {Outlook::Unknown, std::nullopt, "", ""}}};

std::string table(bool inColour)
{
    std::ostringstream stream;
    doctor::renderTable({}, kPredictions, inColour, stream);
    return stream.str();
}

TEST(Table, JoinsTheOperationsThatShareARemedy)
{
    const std::string text = table(false);
    EXPECT_TRUE(holds("            SFtpClient         SFtpSession\n"
                      "  download  works              works\n"
                      "  upload    will fail with 67  works\n"
                      "  rename    unknown            will fail with 60\n"
                      "  delete    will fail          unknown\n"
                      "\n"
                      "Why:\n"
                      "  SFtpClient, upload, delete:\n"
                      "    because\n"
                      "  SFtpClient, rename:\n"
                      "    perhaps\n"
                      "  SFtpSession, rename:\n"
                      "    so\n"
                      "\n"
                      "What to change:\n"
                      "  SFtpClient, upload, delete:\n"
                      "    Do this.\n"
                      "  both, rename:\n"
                      "    Do that.\n",
                      text));
}

TEST(Table, IsColouredOnlyWhenAskedTo)
{
    EXPECT_EQ(std::string::npos, table(false).find('\x1b'));
    EXPECT_TRUE(holds("\x1b[32mworks\x1b[0m\n", table(true)));
    EXPECT_TRUE(holds("\x1b[31mwill fail with 67\x1b[0m  \x1b[32mworks\x1b[0m\n", table(true)));
}

TEST(Json, ReportsEachOperation)
{
    std::ostringstream stream;
    doctor::renderJson({}, kPredictions, stream);
    const auto json = nlohmann::json::parse(stream.str());
    EXPECT_EQ(1, json["status"]);
    ASSERT_EQ(4U, json["operations"].size());
    EXPECT_EQ("works", json["operations"][0]["outlook"]);
    EXPECT_EQ(67, json["operations"][1]["code"]);
    EXPECT_EQ("Do this.", json["operations"][1]["remedy"]);
    EXPECT_EQ("unknown", json["operations"][2]["outlook"]);
    EXPECT_TRUE(json["operations"][2]["code"].is_null());
    EXPECT_EQ("works", json["operations"][1]["session"]["outlook"]);
    EXPECT_EQ(60, json["operations"][2]["session"]["code"]);
    EXPECT_EQ("so", json["operations"][2]["session"]["reason"]);
    EXPECT_EQ("Do that.", json["operations"][2]["session"]["remedy"]);
}

constexpr char kHostile[] = R"(C:\dir "x")"
                            " \x1b[2J \xc2\x9b \x7f \xff \xc3\xa4";
constexpr char kHostileReadBack[] = R"(C:\dir "x")"
                                    " \x1b[2J \xc2\x9b \x7f \xef\xbf\xbd \xc3\xa4";

doctor::Report hostileReport()
{
    const doctor::ServerText text(kHostile, PasswordMask("", ""));
    doctor::Report report;
    report.contact.addresses = {"192.0.2.1"};
    report.contact.greeting = {doctor::Ending::Complete, 220, text};
    report.tls.chain.push_back({text, text, text, "", ""});
    return report;
}

TEST(Json, EscapesServerTextOnce)
{
    std::ostringstream stream;
    doctor::renderJson(hostileReport(), {{{Outlook::Fails, 67, kHostile, kHostile}, "upload", {}}}, stream);
    const auto json = nlohmann::json::parse(stream.str());
    EXPECT_EQ(kHostileReadBack, json["operations"][0]["reason"]);
    EXPECT_EQ(kHostileReadBack, json["operations"][0]["remedy"]);
    EXPECT_EQ("greeting", json["findings"][3]["probe"]);
    EXPECT_EQ(std::string("220 ") + kHostileReadBack, json["findings"][3]["seen"]);
    for (const char* const key : {"subject", "issuer", "serial"}) {
        EXPECT_EQ(kHostileReadBack, json["certificates"][0][key]) << key;
    }
}

TEST(Json, ContainsNoTerminalControls)
{
    std::ostringstream stream;
    doctor::renderJson(hostileReport(), {{{Outlook::Fails, 67, kHostile, kHostile}, "upload", {}}}, stream);
    for (const char character : stream.str()) {
        EXPECT_TRUE(character == '\n' || (character >= ' ' && character <= '~')) << static_cast<int>(character);
    }
}

TEST(Table, EscapesServerTextOnce)
{
    std::ostringstream stream;
    doctor::renderTable(hostileReport(), {{{Outlook::Fails, 67, kHostile, kHostile}, "upload", {}}}, false, stream);
    constexpr char kEscaped[] = R"(C:\\dir "x" \x1b[2J \xc2\x9b \x7f \xff )"
                                "\xc3\xa4\n";
    for (const char* const row :
         {"  greeting           ok    220 ", "Why:\n  SFtpClient, all:\n    ", "change:\n  SFtpClient, all:\n    "}) {
        EXPECT_TRUE(holds(std::string(row) + kEscaped, stream.str())) << row << stream.str();
    }
}

} // namespace
