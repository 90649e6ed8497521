#include "harness/AppliedSettings.h"
#include "harness/LogCapture.h"
#include "harness/TemporaryFolder.h"

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
    EXPECT_EQ(keysIn(ini),
              (std::set<std::string>{"[General]CertAuthSwitch", "[Log]Target", "[Log]Level", "[Log]Format",
                                     "[Log]MaxBytes", "[Log]Files", "[Security]CipherList", "[Security]Tls13Ciphers"}));

    const TemporaryFolder folder;
    HostConfiguration::instance().load(folder.write("readme.ini", ini));
    const std::shared_ptr<const IniFile> values = HostConfiguration::instance().values();
    EXPECT_EQ(ConfigReader::getInt("General", "CertAuthSwitch", true), 0);
    const HostLogSettings log = logSettingsFrom(*values);
    EXPECT_EQ(log.file, "/var/log/my-host/transfers.log");
    EXPECT_EQ(log.level, LogLevel::Info);
    EXPECT_EQ(log.format, LogFormat::Json);
    EXPECT_EQ(log.maxBytes, 1048576U);
    EXPECT_EQ(log.files, 8U);
    const HostTlsSettings tls = tlsSettingsFrom(*values);
    EXPECT_EQ(tls.cipherList, "ECDHE+CHACHA20:ECDHE+AESGCM");
    EXPECT_EQ(tls.tls13Ciphers, "TLS_CHACHA20_POLY1305_SHA256:TLS_AES_256_GCM_SHA384");
}

TEST(Readme, TellsTheDefaults)
{
    const std::string ini = blockOf("ini");
    const HostLogSettings defaults;
    EXPECT_NE(ini.find("The default is " + std::to_string(defaults.maxBytes) + ".\nMaxBytes="), std::string::npos);
    EXPECT_NE(ini.find("The default is " + std::to_string(defaults.files) + ".\nFiles="), std::string::npos);
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
    EXPECT_EQ(capture.withoutTimes(), replaceTimes(blockOf("")));
}
