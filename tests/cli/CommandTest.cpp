#include "harness/RunCommand.h"
#include "support/LogCapture.h"
#include "support/LoopbackPort.h"
#include "support/TemporaryFolder.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

namespace {

// Releases of libcurl differ in the apostrophe.
const std::string kRefused = std::string("7 ") + curl_easy_strerror(CURLE_COULDNT_CONNECT) + "\n";

ProgramResult run(Words form)
{
    form.insert(form.end(), {"--user", "me", "--ca", "none", "--as-host"});
    // Leak detection must not report the lists that mv and rm leave behind.
    return runCommand(form, {{"SFTPCLIENT_PASSWORD", "secret"}, {"LD_PRELOAD", SFTPCLIENT_TRUST_LIBRARY}}, "/");
}

class Command : public testing::Test
{
protected:
    const LoopbackPort port; // refuses connections
    const std::string url = "ftp://" + port.address() + "/";
};

} // namespace

TEST_F(Command, ReportsTheResultAndExitsWithIt)
{
    const TextFile file("contents");
    const std::vector<Words> forms{{"test", url},
                                   {"ls", url, file.path()},
                                   {"put", file.path(), url + "x"},
                                   {"mv", url, "old", "new"},
                                   {"rm", url, "name"}};
    for (const Words& form : forms) {
        SCOPED_TRACE(form[0]);
        const ProgramResult result = run(form);
        EXPECT_TRUE(exited(7, result));
        EXPECT_EQ("", result.out);
        EXPECT_TRUE(holds("\n" + form[0] + ": " + kRefused, result.err));
    }
}

TEST_F(Command, HidesTheTraceOfTheSizeCheckAndShowsTheRecords)
{
    const ProgramResult result = run({"get", url + "x", "local"});
    EXPECT_TRUE(exited(255, result));
    EXPECT_EQ("", result.out);
    const std::string failed = "hint: no server answers there; check host, port and firewalls\n"
                               "get: -1 the size check before the download failed: " +
                               kRefused;
    const std::string::size_type line = result.err.find(failed);
    ASSERT_EQ(result.err.size() - failed.size(), line) << result.err;
    const std::string log = replaceTimes(result.err.substr(0, line));
    EXPECT_EQ(0U, log.find("TIME error SFtpClient request=0 SFtpClient::CheckFileSizeBeforeDownload():")) << log;
    EXPECT_EQ(log.size() - 1, log.find('\n')) << log;
    EXPECT_TRUE(holds(" curl_easy_perform fail, res =" + kRefused.substr(2), log));
}

TEST_F(Command, LogsOnlyFailuresIfQuiet)
{
    EXPECT_TRUE(holds(" debug ", run({"ls", url}).err));
    const ProgramResult quiet = run({"ls", url, "--quiet"});
    EXPECT_FALSE(holds(" debug ", quiet.err));
    EXPECT_TRUE(holds(" error ", quiet.err));
}

TEST_F(Command, ReadsTheConfigurationItIsGiven)
{
    const TextFile off("[General]\nCertAuthSwitch=0\n");
    const std::string unverified = "Establish SSL without cert:none\n";
    EXPECT_TRUE(holds(unverified, run({"ls", url, "--config", off.path()}).err));
    EXPECT_FALSE(holds(unverified, run({"ls", url}).err));
}
