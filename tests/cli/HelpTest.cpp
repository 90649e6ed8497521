#include "harness/RunCommand.h"
#include "support/TemporaryFolder.h"

#include <usage/Commands.h>

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace {

void expectGolden(const Words& form, const std::string& name)
{
    const ProgramResult help = runCommand(form);
    EXPECT_TRUE(exited(0, help));
    EXPECT_EQ("", help.err);
    EXPECT_TRUE(sameText(contentOf(SFTPCLIENT_GOLDEN "/" + name + ".txt"), help.out))
        << "If that is meant, write the command's own output into golden/" << name << ".txt.";
}

} // namespace

TEST(Help, MatchesItsGoldenFiles)
{
    expectGolden({"--help"}, "sftpclient");
    expectGolden({"-h"}, "sftpclient");
    for (const Command& command : commands()) {
        SCOPED_TRACE(command.name);
        expectGolden({command.name, "--help"}, command.name);
        expectGolden({command.name, "-h"}, command.name);
    }
}

// Up to the missing server: the files that an example names must exist, and the command must accept its arguments.
TEST(Help, HasExamplesThatTheCommandTakes)
{
    for (const Command& command : commands()) {
        SCOPED_TRACE(command.name);
        const Lines lines = linesOf(command.examples);
        for (const std::string& line : lines) {
            std::istringstream words(line);
            Words form{std::istream_iterator<std::string>(words), {}};
            ASSERT_EQ("sftpclient", form.front());
            form.erase(form.begin());
            form.emplace_back("--help");
            EXPECT_TRUE(exited(0, runCommand(form))) << line;
            form.back() = "--no-such-option";
            EXPECT_EQ(0U, runCommand(form).err.find("sftpclient: There is no option --no-such-option.")) << line;
        }
        EXPECT_FALSE(lines.empty()) << command.name;
    }
}

TEST(Version, NamesTheLibrariesToo)
{
    const ProgramResult version = runCommand({"--version"});
    EXPECT_TRUE(exited(0, version));
    const curl_version_info_data* const libcurl = curl_version_info(CURLVERSION_NOW);
    const std::string expected = std::string("sftpclient " SFTPCLIENT_VERSION "\nlibcurl/") + libcurl->version + "\n" +
                                 libcurl->ssl_version + "\n";
    EXPECT_EQ(expected, version.out.substr(0, expected.size()));
    EXPECT_TRUE(holds("\nOpenSSL/", expected));
}
