#include "harness/RunCommand.h"
#include "support/SetVariable.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <base/UsageError.h>
#include <operation/SessionOptionsOf.h>
#include <usage/Options.h>
#include <usage/Settings.h>

#include <gtest/gtest.h>

#include <filesystem>

using namespace std::chrono_literals;

namespace {

/// What the options of the command line make of a session, for a user who has nothing at home.
class SessionOptionsOf : public testing::Test
{
protected:
    static SessionOptions made(const TypedOptions& typed)
    {
        Arguments arguments;
        applySettings(typed, arguments);
        return sessionOptionsOf(arguments);
    }

    static std::string refusalOf(const TypedOptions& typed)
    {
        return thrownBy<UsageError>([&] { made(typed); });
    }

    TemporaryFolder folder;
    SetVariable home{"HOME", folder.path()};
    SetVariable nowhere{"XDG_CONFIG_HOME", "/nowhere"};
};

TEST_F(SessionOptionsOf, AreTheSafeOnesWithoutAnOption)
{
    const SessionOptions options = made({});
    EXPECT_TRUE(options.requireTls);
    EXPECT_TRUE(options.compareHostName);
    EXPECT_TRUE(options.atomicUpload);
    EXPECT_TRUE(options.verifyUpload);
    EXPECT_FALSE(options.acceptUnknownHostKey);
    EXPECT_FALSE(options.resume);
    EXPECT_EQ(TlsVersion::Tls12, options.minimumTls);
    EXPECT_EQ("", options.knownHostsFile);
    EXPECT_EQ("", options.proxy);
    EXPECT_EQ(20s, options.connectTimeout);
    EXPECT_EQ(60s, options.replyTimeout);
    EXPECT_EQ(60s, options.stallTimeout);
    EXPECT_EQ(0s, options.callTimeout);
    EXPECT_EQ(0U, options.sendRate);
}

TEST_F(SessionOptionsOf, FollowTheOptions)
{
    const std::string certificate = folder.write("cert.pem", "certificate");
    const std::string key = folder.write("key.pem", "key");
    const std::string hosts = folder.write("hosts", "");
    const SessionOptions options = made({{"--clear-login", "true"},
                                         {"--tls-min", "1.3"},
                                         {"--pin", "sha256//x"},
                                         {"--client-cert", certificate},
                                         {"--client-key", key},
                                         {"--known-hosts", hosts},
                                         {"--fingerprint", "SHA256:y"},
                                         {"--proxy", "socks5h://proxy"},
                                         {"--connect-time", "1"},
                                         {"--stall-time", "2"},
                                         {"--max-time", "3"},
                                         {"--limit-rate", "5"},
                                         {"--no-verify", "true"},
                                         {"--resume", "true"}});
    EXPECT_FALSE(options.requireTls);
    EXPECT_EQ(TlsVersion::Tls13, options.minimumTls);
    EXPECT_EQ("sha256//x", options.pinnedPublicKey);
    EXPECT_EQ("certificate", options.clientCertificate);
    EXPECT_EQ("key", options.clientKey);
    EXPECT_EQ(hosts, options.knownHostsFile);
    EXPECT_EQ("SHA256:y", options.hostKeySha256);
    EXPECT_EQ("socks5h://proxy", options.proxy);
    EXPECT_EQ(1s, options.connectTimeout);
    EXPECT_EQ(2s, options.replyTimeout);
    EXPECT_EQ(2s, options.stallTimeout);
    EXPECT_EQ(3s, options.callTimeout);
    EXPECT_EQ(5U, options.sendRate);
    EXPECT_EQ(5U, options.receiveRate);
    EXPECT_FALSE(options.verifyUpload);
    EXPECT_TRUE(options.resume);
}

TEST_F(SessionOptionsOf, TakeTheUsersKnownHosts)
{
    std::filesystem::create_directory(folder.file(".ssh"));
    const std::string hosts = folder.write(".ssh/known_hosts", "");
    EXPECT_EQ(hosts, made({}).knownHostsFile);
    EXPECT_EQ("The file of --known-hosts /nowhere cannot be read: name one that can be.",
              refusalOf({{"--known-hosts", "/nowhere"}}));
}

TEST_F(SessionOptionsOf, CountBytesInUnits)
{
    EXPECT_EQ(500U << 10U, made({{"--limit-rate", "500K"}}).sendRate);
    EXPECT_EQ(2U << 20U, made({{"--limit-rate", "2M"}}).receiveRate);
    EXPECT_EQ(3ULL << 30U, made({{"--limit-rate", "3G"}}).receiveRate);
    EXPECT_EQ(9223372036854775807U, made({{"--limit-rate", "9223372036854775807"}}).sendRate);
    for (const std::string text : {"0", "-1", "x", "5k", "5MB", "K", "1 M", "9223372036854775808", "8589934592G"}) {
        EXPECT_EQ("--limit-rate must be a number of bytes a second, such as 500K or 2M.",
                  refusalOf({{"--limit-rate", text}}))
            << text;
    }
}

TEST_F(SessionOptionsOf, RejectWhatNoSessionCanUse)
{
    const std::string key = folder.write("key.pem", "key");
    EXPECT_EQ("--client-cert and --client-key belong together: give both, or neither.",
              refusalOf({{"--client-key", key}}));
    EXPECT_EQ("The client's certificate /nowhere cannot be read (No such file or directory): name a PEM file.",
              refusalOf({{"--client-key", key}, {"--client-cert", "/nowhere"}}));
    EXPECT_EQ("--tls-min must be 1.2 or 1.3.", refusalOf({{"--tls-min", "1.1"}}));
    EXPECT_EQ("--pin must be sha256// and the base64 of a public key's SHA-256.", refusalOf({{"--pin", "md5//x"}}));
}

TEST_F(SessionOptionsOf, GoByTheOptionsNamesInMessages)
{
    EXPECT_EQ("set --fingerprint, or --known-hosts; --fingerprint is another",
              withOptionNames("set hostKeySha256, or knownHostsFile; hostKeySha256 is another"));
    EXPECT_EQ("got cannot be written: URL, --ca",
              withOptionNames("localPath got cannot be written: remotePath, caCert"));
}

TEST_F(SessionOptionsOf, HaveNoEffectOnAHost)
{
    for (const Option& option : options()) {
        if (option.ofSession && belongsTo(option, Operation::Test)) {
            const std::string value = *option.value == '\0'                     ? "true"
                                      : option.name == std::string("--tls-min") ? "1.3"
                                                                                : "sha256//x";
            const ProgramResult result =
                runCommand({"test", "ftps://me@host/", "--as-host", std::string(option.name) + "=" + value});
            EXPECT_TRUE(exited(2, result));
            EXPECT_EQ("sftpclient: " + std::string(option.name) +
                          " has no effect with --as-host: SFtpClient knows nothing of it. Leave one of them out.\n",
                      result.err);
        }
    }
}

} // namespace
