#include "harness/ClosedPort.h"
#include "harness/LogCapture.h"
#include "harness/RunCommand.h"
#include "harness/TextFile.h"

#include <gtest/gtest.h>

namespace {

constexpr char kRefused[] = "7 Couldn't connect to server\n";

CommandResult run(std::vector<std::string> form)
{
    form.insert(form.end(), {"--user", "me", "--ca", "none"});
    // The lists that mv and rm leave behind are kept in sight of leak detection.
    return runCommand(form, {{"SFTPCLIENT_PASSWORD", "secret"}, {"LD_PRELOAD", SFTPCLIENT_TRUST_LIBRARY}}, "/");
}

} // namespace

TEST(Command, TellsTheResultAndExitsWithIt)
{
    const ClosedPort port;
    const TextFile file("contents");
    const std::vector<std::vector<std::string>> forms{{"test", port.url() + "/"},
                                                      {"ls", port.url() + "/", file.path()},
                                                      {"put", file.path(), port.url() + "/x"},
                                                      {"mv", port.url() + "/", "old", "new"},
                                                      {"rm", port.url() + "/", "name"}};
    for (const std::vector<std::string>& form : forms) {
        const CommandResult result = run(form);
        EXPECT_EQ(result.status, 7);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("\n" + form[0] + ": " + kRefused), std::string::npos) << result.err;
    }
}

TEST(Command, HidesTheTraceOfTheSizeCheckAndShowsTheRecords)
{
    const ClosedPort port;
    const CommandResult result = run({"get", port.url() + "/x", "local"});
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(result.out, "");
    const std::string failed = "hint: no server answers there; check host, port and firewalls\n"
                               "get: -1 the size check before the download failed: 7 Couldn't connect to server\n";
    const std::string::size_type line = result.err.find(failed);
    ASSERT_EQ(line, result.err.size() - failed.size()) << result.err;
    const std::string log = replaceTimes(result.err.substr(0, line));
    EXPECT_EQ(log.find("TIME error SFtpClient request=0 SFtpClient::CheckFileSizeBeforeDownload():"), 0U) << log;
    EXPECT_EQ(log.find('\n'), log.size() - 1) << log;
    EXPECT_NE(log.find(" curl_easy_perform fail, res =Couldn't connect to server\n"), std::string::npos) << log;
}

TEST(Command, LogsFailuresOnlyWhenToldSo)
{
    const ClosedPort port;
    EXPECT_NE(run({"ls", port.url() + "/"}).err.find(" debug "), std::string::npos);
    const CommandResult quiet = run({"ls", port.url() + "/", "--quiet"});
    EXPECT_EQ(quiet.err.find(" debug "), std::string::npos) << quiet.err;
    EXPECT_NE(quiet.err.find(" error "), std::string::npos) << quiet.err;
}

TEST(Command, ReadsTheConfigurationItIsGiven)
{
    const ClosedPort port;
    const TextFile off("[General]\nCertAuthSwitch=0\n");
    const std::string unverified = "Establish SSL without cert:none\n";
    EXPECT_NE(run({"ls", port.url() + "/", "--config", off.path()}).err.find(unverified), std::string::npos);
    EXPECT_EQ(run({"ls", port.url() + "/"}).err.find(unverified), std::string::npos);
}
