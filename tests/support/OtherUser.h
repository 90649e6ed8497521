#ifndef SUPPORT_OTHERUSER_H
#define SUPPORT_OTHERUSER_H

#include <sys/types.h>

/// The calling thread opens files as a user to whom their modes apply, as long as the object lives. They apply to all
/// but root, so this only affects root; it concerns one thread, and does not change the process.
class OtherUser
{
public:
    OtherUser();
    ~OtherUser();
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

private:
    const uid_t m_user;
    const gid_t m_group;
};

#endif
