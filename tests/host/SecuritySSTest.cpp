#include <SecuritySS.h>

#include <gtest/gtest.h>

TEST(SecuritySS, AnswersSuccessAndSetsNothing)
{
    std::string cert = "none";
    EXPECT_EQ(SecuritySS::enrichSSL(nullptr, cert), SECURITYSS_SUCCESS);
    EXPECT_EQ(cert, "none");
}
