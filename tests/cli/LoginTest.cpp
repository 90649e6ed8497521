#include "support/SetVariable.h"
#include "support/TemporaryFolder.h"
#include "support/Thrown.h"

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
        m_arguments.remote = RemoteUrl("ftps://host/");
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
        return thrownBy<UsageError>([this] { login(); });
    }

    TextFile m_file{"from file\n"};
    TextFile m_netrc{"machine host login me password \"from netrc\" machine other login you password else"};
    Arguments m_arguments;
};

constexpr char kVariable[] = "SFTPCLIENT_PASSWORD";

} // namespace

TEST_F(Login, TakesThePasswordFromTheFirstSource)
{
    m_arguments.netrcFile = m_netrc.path();
    EXPECT_EQ("me:from netrc", login());
    {
        const SetVariable variable(kVariable, "");
        EXPECT_EQ("me:from netrc", login()) << "an empty variable counts as none";
    }
    const SetVariable variable(kVariable, "from environment");
    EXPECT_EQ("me:from environment", login());
    m_arguments.passwordFile = m_file.path();
    EXPECT_EQ("me:from file", login());
}

TEST_F(Login, TakesTheUserFromNetrcOnlyIfNoOtherIsGiven)
{
    m_arguments.netrcFile = m_netrc.path();
    m_arguments.user = "";
    EXPECT_EQ("me:from netrc", login());
    m_arguments.remote = RemoteUrl("ftps://other/");
    EXPECT_EQ("you:else", login());
    const SetVariable variable(kVariable, "from environment");
    EXPECT_EQ("you:from environment", login());
    m_arguments.user = "someone";
    EXPECT_EQ("someone:from environment", login());
}

TEST_F(Login, FindsTheUsualNetrcFileAtHome)
{
    const TemporaryFolder folder;
    folder.write(".netrc", contentOf(m_netrc.path()));
    const SetVariable home("HOME", folder.path());
    m_arguments.netrc = true;
    EXPECT_EQ("me:from netrc", login());
    const SetVariable none("HOME", nullptr);
    EXPECT_EQ("HOME is not set, so there is no ~/.netrc: name the file with --netrc-file FILE.", refusal());
}

TEST_F(Login, RejectsTwoExplicitSources)
{
    m_arguments.passwordFile = m_file.path();
    m_arguments.passwordFromInput = true;
    EXPECT_EQ("The password can come from --password-file or from --password-stdin: leave one of them out.", refusal());
}

TEST_F(Login, ListsTheSourcesOfAUser)
{
    const SetVariable variable(kVariable, "secret");
    m_arguments.user = "";
    EXPECT_EQ("There is no user: write it into the URL (ftps://user@host/), or give --user NAME.", refusal());
    m_arguments.remote = RemoteUrl("ftps://unknown/");
    m_arguments.netrcFile = m_netrc.path();
    EXPECT_EQ("There is no user: " + m_netrc.path() + " has none for this host; give --user NAME.", refusal());
}

TEST_F(Login, RejectsUsersAndPasswordsThatFtpCannotSend)
{
    const SetVariable variable(kVariable, "secret");
    m_arguments.user = "me\r\nDELE x";
    EXPECT_EQ("The user must not hold a control byte (a line break, a tab, ...).", refusal());
    m_arguments.user = "a:b";
    EXPECT_EQ("The user must not hold a \":\".", refusal());
    m_arguments.user = "me";
    const std::string control = "The password must not hold a control byte (a line break, a tab, ...).";
    {
        const SetVariable broken(kVariable, "a\nb");
        EXPECT_EQ(control, refusal());
    }
    for (const std::string& text : {std::string("a\tb\n"), std::string("a\0b\n", 4), std::string("a\r\r\n")}) {
        SCOPED_TRACE(testing::PrintToString(text));
        const TextFile file(text);
        m_arguments.passwordFile = file.path();
        EXPECT_EQ(control, refusal());
    }
    m_arguments.passwordFile = "";
    const TextFile netrc("machine host login \"a\nb\" password secret");
    m_arguments.netrcFile = netrc.path();
    m_arguments.user = "";
    EXPECT_EQ("The user must not hold a control byte (a line break, a tab, ...).", refusal());
}
