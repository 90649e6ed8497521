#include "harness/SetVariable.h"
#include "harness/TextFile.h"

#include <base/UsageError.h>
#include <credentials/Login.h>
#include <credentials/Password.h>

#include <gtest/gtest.h>

namespace {

class Login : public testing::Test
{
protected:
    Login()
    {
        m_arguments.url = "ftps://host/";
        m_arguments.user = "me";
    }

    // "USER:PASSWORD".
    std::string login() const
    {
        SFtpRequest request;
        readLogin(m_arguments, request);
        return request.userName + ":" + request.password;
    }

    std::string refusal() const
    {
        try {
            login();
        } catch (const UsageError& error) {
            return error.what();
        }
        return "taken";
    }

    TextFile m_file{"from file\n"};
    TextFile m_netrc{"machine host login me password \"from netrc\" machine other login you password else"};
    Arguments m_arguments;
};

constexpr char kVariable[] = "SFTPCLIENT_PASSWORD";

} // namespace

TEST_F(Login, TakesThePasswordFromTheFirstSourceThatThereIs)
{
    m_arguments.netrcFile = m_netrc.path();
    EXPECT_EQ(login(), "me:from netrc");
    {
        const SetVariable variable(kVariable, "");
        EXPECT_EQ(login(), "me:from netrc") << "an empty variable counts as none";
    }
    const SetVariable variable(kVariable, "from environment");
    EXPECT_EQ(login(), "me:from environment");
    m_arguments.passwordFile = m_file.path();
    EXPECT_EQ(login(), "me:from file");
}

TEST_F(Login, TakesTheUserFromTheNetrcFileOnlyWithoutAnother)
{
    m_arguments.netrcFile = m_netrc.path();
    m_arguments.user = "";
    EXPECT_EQ(login(), "me:from netrc");
    m_arguments.url = "ftps://other/";
    EXPECT_EQ(login(), "you:else");
    const SetVariable variable(kVariable, "from environment");
    EXPECT_EQ(login(), "you:from environment");
    m_arguments.user = "someone";
    EXPECT_EQ(login(), "someone:from environment");
}

TEST_F(Login, FindsTheUsualNetrcFileAtHome)
{
    char home[] = "/tmp/sftpclient-home-XXXXXX";
    ASSERT_NE(mkdtemp(home), nullptr);
    const std::string file = std::string(home) + "/.netrc";
    ASSERT_EQ(rename(m_netrc.path().c_str(), file.c_str()), 0);
    const std::string before = std::getenv("HOME");
    setenv("HOME", home, 1);
    m_arguments.netrc = true;
    EXPECT_EQ(login(), "me:from netrc");
    unsetenv("HOME");
    EXPECT_EQ(refusal(), "HOME is not set, so there is no ~/.netrc: name the file with --netrc-file FILE.");
    setenv("HOME", before.c_str(), 1);
    EXPECT_EQ(remove(file.c_str()), 0);
    EXPECT_EQ(remove(home), 0);
}

TEST_F(Login, RefusesTwoExplicitSources)
{
    m_arguments.passwordFile = m_file.path();
    m_arguments.passwordFromInput = true;
    EXPECT_EQ(refusal(), "The password can come from --password-file or from --password-stdin: leave one of them out.");
}

TEST_F(Login, SaysWhereAUserCanComeFrom)
{
    const SetVariable variable(kVariable, "secret");
    m_arguments.user = "";
    EXPECT_EQ(refusal(), "There is no user: write it into the URL (ftps://user@host/), or give --user NAME.");
    m_arguments.url = "ftps://unknown/";
    m_arguments.netrcFile = m_netrc.path();
    EXPECT_EQ(refusal(), "There is no user: " + m_netrc.path() + " has none for this host; give --user NAME.");
}

TEST_F(Login, RefusesWhatTheLoginCannotHold)
{
    const SetVariable variable(kVariable, "secret");
    m_arguments.user = "me\r\nDELE x";
    EXPECT_EQ(refusal(), "The user must not hold a control byte (a line break, a tab, ...).");
    m_arguments.user = "a:b";
    EXPECT_EQ(refusal(), "The user must not hold a \":\".");
    m_arguments.user = "me";
    const std::string control = "The password must not hold a control byte (a line break, a tab, ...).";
    {
        const SetVariable broken(kVariable, "a\nb");
        EXPECT_EQ(refusal(), control);
    }
    for (const std::string& text : {std::string("a\tb\n"), std::string("a\0b\n", 4), std::string("a\r\r\n")}) {
        const TextFile file(text);
        m_arguments.passwordFile = file.path();
        EXPECT_EQ(refusal(), control);
    }
    m_arguments.passwordFile = "";
    const TextFile netrc("machine host login \"a\nb\" password secret");
    m_arguments.netrcFile = netrc.path();
    m_arguments.user = "";
    EXPECT_EQ(refusal(), "The user must not hold a control byte (a line break, a tab, ...).");
}
