#ifndef SERVERS_PRIVATESYSTEM_H
#define SERVERS_PRIVATESYSTEM_H

#include <string>

/// The machine as a daemon is to see it: with one user of its own, whose files are in /run/served, with the unpacked
/// packages in /run/packages, and nothing else in /run and /var/log. The daemons look users up in /etc, so that is
/// another folder, in a mount namespace that goes with the last process in it. Packages may come and go meanwhile.
class PrivateSystem
{
public:
    static constexpr const char* kUser = "backup";
    static constexpr const char* kPassword = "correct horse battery";
    static constexpr unsigned int kUserId = 2121;

    /// folder: where the replaced files are made.
    PrivateSystem(const std::string& folder, const std::string& served, const std::string& packages);

    /// Lets the calling thread, and what it starts from now on, see this system. Throws `std::system_error`.
    /// REQUIRES: root.
    void enter() const;

private:
    std::string m_etc;
    std::string m_served;
    std::string m_packages;
};

#endif
