#include "log/GetFunctionName.h"

#include <gtest/gtest.h>

namespace {

TEST(FunctionName, DropsReturnTypeAndParameters)
{
    EXPECT_EQ("CurlSFtpResponse::Listsftpdir()",
              GetFunctionName("bool CurlSFtpResponse::Listsftpdir(const SFtpRequest&, uint32_t)"));
}

TEST(FunctionName, DropsTheWordsBeforeTheReturnType)
{
    EXPECT_EQ("CurlSFtpClient::DownLoadSFtpFile()",
              GetFunctionName("virtual boost::shared_ptr<ISFtpResponse> CurlSFtpClient::DownLoadSFtpFile(const "
                              "SFtpRequest&, uint32_t)"));
    EXPECT_EQ("ISFtpClient::GetInstance()", GetFunctionName("static ISFtpClient* ISFtpClient::GetInstance()"));
}

TEST(FunctionName, KeepsANameWithoutABlankBeforeIt)
{
    EXPECT_EQ("CurlSFtpResponse::CurlSFtpResponse()", GetFunctionName("CurlSFtpResponse::CurlSFtpResponse()"));
    EXPECT_EQ("f()", GetFunctionName("f(int)"));
}

TEST(FunctionName, LooksForBlanksBeforeTheParametersOnly)
{
    EXPECT_EQ("f()", GetFunctionName("f(const int&, unsigned int)"));
    EXPECT_EQ("f()", GetFunctionName("int f(const int&, unsigned int) const"));
}

TEST(FunctionName, EndsAtTheFirstOfSeveralParentheses)
{
    EXPECT_EQ("f()", GetFunctionName("void f(void (*)(int), int)"));
    EXPECT_EQ("A::operator()", GetFunctionName("int A::operator()(int)"));
    EXPECT_EQ("()", GetFunctionName("void (anonymous namespace)::f(int)"));
}

TEST(FunctionName, TakesTheLastOfSeveralBlanks)
{
    EXPECT_EQ("f()", GetFunctionName("a b  f()"));
    EXPECT_EQ("()", GetFunctionName("int f ()"));
    EXPECT_EQ("f()", GetFunctionName(" f()"));
}

TEST(FunctionName, DoesNotTreatATabAsABlank) { EXPECT_EQ("int\tf()", GetFunctionName("int\tf(int)")); }

TEST(FunctionName, ReturnsATextWithoutParametersAsItIs)
{
    EXPECT_EQ("", GetFunctionName(""));
    EXPECT_EQ("main", GetFunctionName("main"));
    EXPECT_EQ("int main", GetFunctionName("int main"));
    EXPECT_EQ("int main)", GetFunctionName("int main)"));
}

TEST(FunctionName, IsOnlyParenthesesIfTheParametersComeFirst)
{
    EXPECT_EQ("()", GetFunctionName("("));
    EXPECT_EQ("()", GetFunctionName("(int a)"));
}

} // namespace
