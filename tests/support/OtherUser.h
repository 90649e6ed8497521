#ifndef SUPPORT_OTHERUSER_H
#define SUPPORT_OTHERUSER_H

#include <sys/types.h>

/// The calling thread opens files as a user whom their modes bind, as long as the object lives. Modes bind everyone but
/// root, so this changes something for root alone; it concerns one thread, and leaves the process what it is.
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
