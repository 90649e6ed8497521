#include "transfer/CallResources.h"

#include "support/Memory.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Long enough to be on the heap.
SFtpRequest requestOf(const std::string& userName, const std::string& password)
{
    SFtpRequest request;
    request.userName = userName;
    request.password = password;
    return request;
}

class UserPwdMemory : public testing::Test
{
protected:
    const SFtpRequest request = requestOf("somebody with a long name", "a password that is long enough");
    unsigned released = 0;
    unsigned releasedWithContent = 0;
    const memory::Observer onRelease = [this](std::string_view block) {
        ++released;
        if (block.find_first_not_of('\0') < request.userName.size() + 1 + request.password.size()) {
            ++releasedWithContent;
        }
    };
};

TEST(UserPwd, JoinsUserAndPassword)
{
    const UserPwd userPwd(requestOf("user", "pass"));
    EXPECT_STREQ("user:pass", userPwd.c_str());
    EXPECT_FALSE(userPwd.empty());
}

TEST(UserPwd, IsAColonIfThereIsNothingToJoin)
{
    const UserPwd userPwd{SFtpRequest()};
    EXPECT_STREQ(":", userPwd.c_str());
    EXPECT_FALSE(userPwd.empty());
    EXPECT_STREQ("user:", UserPwd(requestOf("user", "")).c_str());
    EXPECT_STREQ(":pass", UserPwd(requestOf("", "pass")).c_str());
}

TEST(UserPwd, IsEmptyOnceWiped)
{
    UserPwd userPwd(requestOf("user", "pass"));
    const char* const characters = userPwd.c_str();
    userPwd.wipe();
    EXPECT_TRUE(userPwd.empty());
    EXPECT_STREQ("", userPwd.c_str());
    EXPECT_EQ(std::string(10, '\0'), std::string(characters, 10));
    userPwd.wipe();
    EXPECT_TRUE(userPwd.empty());
}

TEST_F(UserPwdMemory, AllocatesOnlyOnce)
{
    const memory::Watch watch(onRelease);
    const UserPwd userPwd(request);
    EXPECT_EQ(1U, memory::allocations());
    EXPECT_EQ(0U, released);
}

TEST_F(UserPwdMemory, IsWipedByItsDestructor)
{
    {
        const memory::Watch watch(onRelease);
        const UserPwd userPwd(request);
    }
    EXPECT_EQ(1U, released);
    EXPECT_EQ(0U, releasedWithContent);
}

TEST_F(UserPwdMemory, IsWipedWhenAnExceptionPasses)
{
    const auto operation = [this] {
        const UserPwd userPwd(request);
        throw 1;
    };
    {
        const memory::Watch watch(onRelease);
        EXPECT_THROW(operation(), int);
    }
    EXPECT_EQ(1U, released);
    EXPECT_EQ(0U, releasedWithContent);
}

} // namespace
