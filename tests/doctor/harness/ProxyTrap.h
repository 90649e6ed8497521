#ifndef DOCTOR_HARNESS_PROXYTRAP_H
#define DOCTOR_HARNESS_PROXYTRAP_H

#include <base/Descriptor.h>

#include <string>

/// A port of 127.0.0.1 that a proxy might have, and nobody must connect to.
class ProxyTrap
{
public:
    ProxyTrap();

    /// "127.0.0.1:PORT".
    const std::string& address() const { return m_address; }

    /// Whether somebody has connected.
    bool wasReached() const;

private:
    Descriptor m_socket;
    std::string m_address;
};

#endif
