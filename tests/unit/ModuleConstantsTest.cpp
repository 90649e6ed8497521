#include "LocalStrings.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::multimap<std::string, std::string>;

// This program's own sources that write records.
Strings withoutTests(Strings strings)
{
    strings.erase("LogStatementTest.cpp");
    return strings;
}

TEST(ModuleConstants, EverySourceThatLogsHasTheModuleNameForItself)
{
    const Strings expected{{"CurlSFtpClient.cpp", "SFtpClient"},
                           {"CurlSFtpResponse.cpp", "SFtpClient"},
                           {"Delete.cpp", "SFtpClient"},
                           {"Download.cpp", "SFtpClient"},
                           {"DownloadSizeCheck.cpp", "SFtpClient"},
                           {"ISFtpClient.cpp", "SFtpClient"},
                           {"Listing.cpp", "SFtpClient"},
                           {"Rename.cpp", "SFtpClient"},
                           {"ReplyCapture.cpp", "SFtpClient"},
                           {"SFtpClient.cpp", "SFtpClient"},
                           {"SftpConvToX509.cpp", "SFtpClient"},
                           {"SftpSetCertTmp.cpp", "SFtpClient"},
                           {"SslCtxFunction.cpp", "SFtpClient"},
                           {"TestSConnect.cpp", "SFtpClient"},
                           {"Upload.cpp", "SFtpClient"}};
    EXPECT_EQ(expected, withoutTests(localStrings("kModuleName")));
}

TEST(ModuleConstants, TheFacadeAndTheClientHaveTheLogName)
{
    const Strings expected{{"CurlSFtpClient.cpp", "LOG"}, {"SFtpClient.cpp", "LOG"}};
    EXPECT_EQ(expected, localStrings("kLogName"));
}

} // namespace
