#include "harness/RunCommand.h"
#include "harness/TextFile.h"

#include <usage/Commands.h>

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace {

void expectGolden(const std::vector<std::string>& form, const std::string& name)
{
    const CommandResult help = runCommand(form);
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out, contentsOf(SFTPCLIENT_GOLDEN "/" + name + ".txt"))
        << "If that is meant, write the command's own output into golden/" << name << ".txt.";
}

} // namespace

TEST(Help, IsAsItWasRead)
{
    expectGolden({"--help"}, "sftpclient");
    expectGolden({"-h"}, "sftpclient");
    for (const Command& command : commands()) {
        expectGolden({command.name, "--help"}, command.name);
        expectGolden({command.name, "-h"}, command.name);
    }
}

// Up to the server that is not there: what an example names must exist, and what it says must be understood.
TEST(Help, HasExamplesThatTheCommandTakes)
{
    for (const Command& command : commands()) {
        std::istringstream lines(command.examples);
        unsigned count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            std::istringstream words(line);
            std::vector<std::string> form{std::istream_iterator<std::string>(words), {}};
            ASSERT_EQ(form.front(), "sftpclient");
            form.erase(form.begin());
            form.emplace_back("--help");
            EXPECT_EQ(runCommand(form).status, 0) << line;
            form.back() = "--no-such-option";
            EXPECT_EQ(runCommand(form).err.find("sftpclient: There is no option --no-such-option."), 0U) << line;
        }
        EXPECT_GT(count, 0U) << command.name;
    }
}

TEST(Version, NamesTheLibrariesAsWell)
{
    const CommandResult version = runCommand({"--version"});
    EXPECT_EQ(version.status, 0);
    const curl_version_info_data* const libcurl = curl_version_info(CURLVERSION_NOW);
    const std::string expected = std::string("sftpclient " SFTPCLIENT_VERSION "\nlibcurl/") + libcurl->version + "\n" +
                                 libcurl->ssl_version + "\n";
    EXPECT_EQ(version.out.substr(0, expected.size()), expected);
    EXPECT_NE(expected.find("\nOpenSSL/"), std::string::npos);
}
