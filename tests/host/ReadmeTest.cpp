#include "harness/AppliedSettings.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"

#include <ConfigReader.h>
#include <HostConfiguration.h>
#include <HostTlsSettings.h>
#include <LogProxy.h>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <stdexcept>

namespace {

// What host/README.md has between ```LANGUAGE and ```; a block without a language begins after an empty line.
std::string blockOf(const std::string& language)
{
    const std::string readme = contentOf(HOST_README);
    const std::string mark = "\n\n```" + language + "\n";
    const std::size_t begin = readme.find(mark);
    if (begin == std::string::npos) {
        throw std::runtime_error("no block of " + language);
    }
    const std::size_t text = begin + mark.size();
    return readme.substr(text, readme.find("```", text) - text);
}

std::set<std::string> keysIn(const std::string& ini)
{
    std::set<std::string> keys;
    std::istringstream lines(ini);
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind('[', 0) == 0) {
            section = line;
        } else if (line.find('=') != std::string::npos && line.front() != ';') {
            keys.insert(section + line.substr(0, line.find('=')));
        }
    }
    return keys;
}

} // namespace

TEST(Readme, HasEveryKeyAndEachIsRead)
{
    const std::string ini = blockOf("ini");
    EXPECT_EQ((std::set<std::string>{"[General]CertAuthSwitch", "[Log]Target", "[Log]Level", "[Log]Format",
                                     "[Log]MaxBytes", "[Log]Files", "[Security]CipherList", "[Security]Tls13Ciphers"}),
              keysIn(ini));

    const TemporaryFolder folder;
    HostConfiguration::instance().load(folder.write("readme.ini", ini));
    const std::shared_ptr<const IniFile> values = HostConfiguration::instance().values();
    EXPECT_EQ(0, ConfigReader::getInt("General", "CertAuthSwitch", true));
    const HostLogSettings log = logSettingsFrom(*values);
    EXPECT_EQ("/var/log/my-host/transfers.log", log.file);
    EXPECT_EQ(LogLevel::Info, log.level);
    EXPECT_EQ(LogFormat::Json, log.format);
    EXPECT_EQ(1048576U, log.maxBytes);
    EXPECT_EQ(8U, log.files);
    const HostTlsSettings tls = tlsSettingsFrom(*values);
    EXPECT_EQ("ECDHE+CHACHA20:ECDHE+AESGCM", tls.cipherList);
    EXPECT_EQ("TLS_CHACHA20_POLY1305_SHA256:TLS_AES_256_GCM_SHA384", tls.tls13Ciphers);
}

TEST(Readme, StatesTheDefaults)
{
    const std::string ini = blockOf("ini");
    const HostLogSettings defaults;
    EXPECT_TRUE(holds("The default is " + std::to_string(defaults.maxBytes) + ".\nMaxBytes=", ini));
    EXPECT_TRUE(holds("The default is " + std::to_string(defaults.files) + ".\nFiles=", ini));
}

TEST(Readme, ShowsBothFormats)
{
    const LogCapture capture;
    for (const LogFormat format : {LogFormat::Text, LogFormat::Json}) {
        HostLogSettings settings;
        settings.format = format;
        const AppliedSettings applied(settings);
        LogProxy(4, "SFtpClient", 7, "SFtpClient::Listsftpdir()", 57) << 0 << "550 no such file";
    }
    EXPECT_TRUE(sameText(replaceTimes(blockOf("")), capture.withoutTimes()));
}
