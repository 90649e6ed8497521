#include "harness/TextFile.h"

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
    try {
        return found(text, "host");
    } catch (const UsageError& error) {
        return error.what();
    }
}

} // namespace

TEST(Netrc, HasALoginForAHost)
{
    const std::string text = "machine a login me password one\nmachine b\n\tlogin you\n\tpassword two\n";
    EXPECT_EQ(found(text, "a"), "me:one");
    EXPECT_EQ(found(text, "b"), "you:two");
    EXPECT_EQ(found(text, "B"), "you:two");
    EXPECT_EQ(found(text, "c"), "none");
    EXPECT_EQ(found("", "a"), "none");
}

TEST(Netrc, HasALoginForAUserOfAHost)
{
    const std::string text = "machine a login me password one machine a login you password two";
    EXPECT_EQ(found(text, "a"), "me:one");
    EXPECT_EQ(found(text, "a", "you"), "you:two");
    EXPECT_EQ(found(text, "a", "other"), "none");
    EXPECT_EQ(found("machine a password one", "a", "me"), "me:one");
    EXPECT_EQ(found("machine a password one", "a"), "none");
}

TEST(Netrc, HasADefaultForOtherHosts)
{
    const std::string text = "machine a login me password one default login any password two";
    EXPECT_EQ(found(text, "a"), "me:one");
    EXPECT_EQ(found(text, "b"), "any:two");
}

TEST(Netrc, SkipsWhatIsNoLogin)
{
    EXPECT_EQ(found("# machine a login x password y\nmachine a login me account z password one", "a"), "me:one");
    EXPECT_EQ(
        found("machine b login x macdef init\nmachine a login x password y\n\nmachine a login me password one", "a"),
        "me:one");
    EXPECT_EQ(found("macdef init\r\ncd /\r\n\r\nmachine a login me password one\r\n", "a"), "me:one");
}

TEST(Netrc, TakesWordsInQuotes)
{
    EXPECT_EQ(found(R"(machine "a" login "m e" password "o\"n\\e #")", "a"), R"(m e:o"n\e #)");
    EXPECT_EQ(found(R"(machine a login me password machine)", "a"), "me:machine");
    EXPECT_EQ(found(R"(machine a login me password "")", "a"), "me:");
}

TEST(Netrc, RefusesWhatItCannotReadWithoutRepeatingIt)
{
    EXPECT_NE(refusalOf("machine host login me password two words").find(" holds a word that is none of machine,"),
              std::string::npos);
    EXPECT_EQ(refusalOf("machine host login me password two words").find("words"), std::string::npos);
    EXPECT_NE(refusalOf(std::string(65537, ' ')).find(" cannot be read (it is larger than 64 KiB): "),
              std::string::npos);
    EXPECT_EQ(refusalOf(std::string(65536, ' ')), "none");
    EXPECT_EQ(refusalOf("machine host login me password " + std::string(kLongestPassword + 1, 'x')),
              "The password in the netrc file must not be longer than 1023 bytes.");
    std::string text;
    try {
        readNetrc("/nowhere/netrc", "host", text, text);
        FAIL() << "taken";
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "The netrc file /nowhere/netrc cannot be read (No such file or directory): name "
                                   "one that can be with --netrc-file FILE.");
    }
}

TEST(Netrc, HasAWarningWhereOthersCanReadIt)
{
    const TextFile file("machine a login me password one");
    ASSERT_EQ(chmod(file.path().c_str(), 0604), 0);
    testing::internal::CaptureStderr();
    std::string user;
    std::string password;
    EXPECT_TRUE(readNetrc(file.path(), "a", user, password));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "sftpclient: warning: others than its owner can read the netrc file " + file.path() +
                  "; run: chmod 600 " + file.path() + "\n");
}
