#ifndef SFTPCLIENT_CLI_BASE_DESCRIPTOR_H
#define SFTPCLIENT_CLI_BASE_DESCRIPTOR_H

/// Owns a file descriptor, or none (-1), and closes it.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_descriptor; }
    bool isOpen() const { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

#endif
