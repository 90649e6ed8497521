#include "harness/DoctorProcess.h"
#include "support/Lines.h"

#include <gtest/gtest.h>

namespace {

void expectRefusal(const std::vector<std::string>& arguments, const std::string& message)
{
    DoctorProcess process(arguments, "secret");
    EXPECT_EQ(2, process.wait());
    EXPECT_EQ("", process.out());
    EXPECT_TRUE(sameText("sftpclient: " + message + "\n", process.err()));
}

TEST(DoctorUsage, NeedsAUrlAndAUser)
{
    expectRefusal({"--user", "me"}, "URL is required.\nRun sftpclient doctor --help for the usage.");
    expectRefusal({"ftp://host/", "--ca", "none"},
                  "There is no user: write it into the URL (ftps://user@host/), or give --user NAME.");
}

TEST(DoctorUsage, NeedsADirectory)
{
    expectRefusal({"ftp://host/dir", "--user", "me", "--ca", "none"},
                  "The URL of a directory ends in \"/\": write ftp://host/dir/.");
}

TEST(DoctorUsage, BoundsTheTimeout)
{
    for (const std::string seconds : {"0", "601"}) {
        SCOPED_TRACE(seconds);
        expectRefusal({"ftp://host/", "--user", "me", "--timeout", seconds},
                      "--timeout must be a number from 1 to 600.");
    }
}

TEST(DoctorUsage, NeedsConsentToWriteWithoutTls)
{
    for (const std::string scheme : {"ftp", "FTP"}) {
        SCOPED_TRACE(scheme);
        expectRefusal({scheme + "://host/", "--user", "me", "--ca", "none", "--write"},
                      "With an ftp: URL, --write sends the password in the clear, because the library's upload does: "
                      "add --clear-login to agree, or use an ftps: URL.");
    }
}

TEST(DoctorUsage, HelpExplainsTheExitStatus)
{
    DoctorProcess process({"--help"}, "");
    EXPECT_EQ(0, process.wait());
    EXPECT_EQ("", process.err());
    EXPECT_TRUE(holds("Exit status: 0 when all operations will work", process.out()));
}

} // namespace
