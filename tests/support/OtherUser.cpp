#include "support/OtherUser.h"

#include <sys/fsuid.h>
#include <unistd.h>

OtherUser::OtherUser() : m_user(geteuid()), m_group(getegid())
{
    if (m_user == 0) {
        constexpr uid_t kNobody = 65534;
        setfsgid(kNobody);
        setfsuid(kNobody); // the right to pass over modes goes with it
    }
}

OtherUser::~OtherUser()
{
    setfsuid(m_user);
    setfsgid(m_group);
}
