#include "support/OtherUser.h"

#include <sys/fsuid.h>
#include <unistd.h>

OtherUser::OtherUser() : m_user(geteuid()), m_group(getegid())
{
    if (m_user == 0) {
        constexpr uid_t kNobody = 65534;
        setfsgid(kNobody);
        setfsuid(kNobody); // this also drops the capability to override modes
    }
}

OtherUser::~OtherUser()
{
    setfsuid(m_user);
    setfsgid(m_group);
}
