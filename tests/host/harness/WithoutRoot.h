#ifndef SFTPCLIENT_TESTS_HOST_WITHOUTROOT_H
#define SFTPCLIENT_TESTS_HOST_WITHOUTROOT_H

#include <unistd.h>

#include <cerrno>
#include <system_error>

/// Takes root's rights over files from the process as long as this object lives. Changes nothing for other users.
class WithoutRoot
{
public:
    WithoutRoot()
    {
        constexpr uid_t kNobody = 65534;
        if (m_before == 0 && seteuid(kNobody) != 0) {
            throw std::system_error(errno, std::generic_category(), "seteuid");
        }
    }
    ~WithoutRoot() { static_cast<void>(m_before == 0 && seteuid(0) != 0); }
    WithoutRoot(const WithoutRoot&) = delete;
    WithoutRoot& operator=(const WithoutRoot&) = delete;

private:
    uid_t m_before = geteuid();
};

#endif
