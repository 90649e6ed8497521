
#include "support/Lines.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

#include <base/UsageError.h>
#include <credentials/Netrc.h>
#include <credentials/Password.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

// "USER:PASSWORD" for a host, or "none".
std::string found(const std::string& text, const std::string& host, std::string user = "")
{
    const TextFile file(text);
    std::string password;
    return readNetrc(file.path(), host, user, password) ? user + ":" + password : "none";
}

std::string refusalOf(const std::string& text)
{
    return thrownBy<UsageError>([&] { EXPECT_EQ("none", found(text, "host")); });
}

} // namespace

TEST(Netrc, HasALoginForAHost)
{
    const std::string text = "machine a login me password one\nmachine b\n\tlogin you\n\tpassword two\n";
    EXPECT_EQ("me:one", found(text, "a"));
    EXPECT_EQ("you:two", found(text, "b"));
    EXPECT_EQ("you:two", found(text, "B"));
    EXPECT_EQ("none", found(text, "c"));
    EXPECT_EQ("none", found("", "a"));
}

TEST(Netrc, HasALoginForAUserOfAHost)
{
    const std::string text = "machine a login me password one machine a login you password two";
    EXPECT_EQ("me:one", found(text, "a"));
    EXPECT_EQ("you:two", found(text, "a", "you"));
    EXPECT_EQ("none", found(text, "a", "other"));
    EXPECT_EQ("me:one", found("machine a password one", "a", "me"));
    EXPECT_EQ("none", found("machine a password one", "a"));
}

TEST(Netrc, HasADefaultForOtherHosts)
{
    const std::string text = "machine a login me password one default login any password two";
    EXPECT_EQ("me:one", found(text, "a"));
    EXPECT_EQ("any:two", found(text, "b"));
}

TEST(Netrc, SkipsEntriesThatAreNotLogins)
{
    EXPECT_EQ("me:one", found("# machine a login x password y\nmachine a login me account z password one", "a"));
    EXPECT_EQ(
        "me:one",
        found("machine b login x macdef init\nmachine a login x password y\n\nmachine a login me password one", "a"));
    EXPECT_EQ("me:one", found("macdef init\r\ncd /\r\n\r\nmachine a login me password one\r\n", "a"));
}

TEST(Netrc, AcceptsQuotedWords)
{
    EXPECT_EQ(R"(m e:o"n\e #)", found(R"(machine "a" login "m e" password "o\"n\\e #")", "a"));
    EXPECT_EQ("me:machine", found(R"(machine a login me password machine)", "a"));
    EXPECT_EQ("me:", found(R"(machine a login me password "")", "a"));
}

TEST(Netrc, RejectsInvalidEntriesWithoutQuotingThem)
{
    EXPECT_TRUE(holds(" holds a word that is none of machine,", refusalOf("machine host login me password two words")));
    EXPECT_FALSE(holds("words", refusalOf("machine host login me password two words")));
    EXPECT_TRUE(holds(" cannot be read (it is larger than 64 KiB): ", refusalOf(std::string(65537, ' '))));
    EXPECT_EQ(kNothingThrown, refusalOf(std::string(65536, ' ')));
    EXPECT_EQ("The password in the netrc file must not be longer than 1023 bytes.",
              refusalOf("machine host login me password " + std::string(kLongestPassword + 1, 'x')));
    std::string text;
    EXPECT_EQ("The netrc file /nowhere/netrc cannot be read (No such file or directory): name one that can be with "
              "--netrc-file FILE.",
              thrownBy<UsageError>([&] { readNetrc("/nowhere/netrc", "host", text, text); }));
}

TEST(Netrc, CausesAWarningIfOthersCanReadIt)
{
    const TextFile file("machine a login me password one");
    ASSERT_EQ(0, chmod(file.path().c_str(), 0604));
    testing::internal::CaptureStderr();
    std::string user;
    std::string password;
    EXPECT_TRUE(readNetrc(file.path(), "a", user, password));
    EXPECT_EQ("sftpclient: warning: others than its owner can read the netrc file " + file.path() +
                  "; run: chmod 600 " + file.path() + "\n",
              testing::internal::GetCapturedStderr());
}
