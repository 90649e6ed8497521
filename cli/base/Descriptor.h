#ifndef SFTPCLIENT_CLI_BASE_DESCRIPTOR_H
#define SFTPCLIENT_CLI_BASE_DESCRIPTOR_H

#include <unistd.h>

/// Owns a file descriptor, or none (-1), and closes it.
class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_descriptor; }
    bool isOpen() const { return m_descriptor >= 0; }

    void reset(int descriptor = -1)
    {
        if (isOpen()) {
            close(m_descriptor);
        }
        m_descriptor = descriptor;
    }

private:
    int m_descriptor;
};

#endif
