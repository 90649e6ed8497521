#include "doctor/Renderers.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using doctor::Outlook;
using doctor::Verdict;

const std::vector<Verdict> kVerdicts = {{"download", Outlook::Works, 0, "", ""},
                                        {"upload", Outlook::Fails, 67, "because", "Do this."},
                                        {"rename", Outlook::Unknown, std::nullopt, "perhaps", "Do that."},
                                        {"delete", Outlook::Fails, std::nullopt, "because", "Do this."}};

std::string table(bool inColour)
{
    std::ostringstream stream;
    doctor::renderTable({}, kVerdicts, inColour, stream);
    return stream.str();
}

TEST(Table, JoinsTheOperationsThatShareARemedy)
{
    const std::string text = table(false);
    EXPECT_NE(std::string::npos, text.find("  upload    will fail with 67  because\n"
                                           "  rename    unknown            perhaps\n"
                                           "  delete    will fail          because\n"
                                           "\n"
                                           "What to change:\n"
                                           "  upload, delete:\n"
                                           "    Do this.\n"
                                           "  rename:\n"
                                           "    Do that.\n"))
        << text;
}

TEST(Table, IsColouredOnlyWhenAskedTo)
{
    EXPECT_EQ(std::string::npos, table(false).find('\x1b'));
    EXPECT_NE(std::string::npos, table(true).find("\x1b[32mworks\x1b[0m\n")) << table(true);
    EXPECT_NE(std::string::npos, table(true).find("\x1b[31mwill fail with 67\x1b[0m  because\n")) << table(true);
}

TEST(Json, TellsEachOperation)
{
    std::ostringstream stream;
    doctor::renderJson({}, kVerdicts, stream);
    const auto json = nlohmann::json::parse(stream.str());
    EXPECT_EQ(1, json["status"]);
    ASSERT_EQ(4U, json["operations"].size());
    EXPECT_EQ("works", json["operations"][0]["outlook"]);
    EXPECT_EQ(67, json["operations"][1]["code"]);
    EXPECT_EQ("Do this.", json["operations"][1]["remedy"]);
    EXPECT_EQ("unknown", json["operations"][2]["outlook"]);
    EXPECT_TRUE(json["operations"][2]["code"].is_null());
}

TEST(Json, WritesBytesThatAreNoUtf8AsNumbers)
{
    std::ostringstream stream;
    doctor::renderJson({}, {{"upload", Outlook::Fails, 67, "a\xff\x1b", ""}}, stream);
    const auto json = nlohmann::json::parse(stream.str());
    EXPECT_EQ("a\\xff\\x1b", json["operations"][0]["reason"]);
}

} // namespace
