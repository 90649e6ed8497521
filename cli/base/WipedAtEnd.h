#ifndef SFTPCLIENT_CLI_BASE_WIPEDATEND_H
#define SFTPCLIENT_CLI_BASE_WIPEDATEND_H

#include <cstring>
#include <string>

/// Overwrites `text` with zero bytes when it goes out of scope.
class WipedAtEnd
{
public:
    explicit WipedAtEnd(std::string& text) : m_text(text) {}
    ~WipedAtEnd() { explicit_bzero(m_text.data(), m_text.size()); }
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    std::string& m_text;
};

#endif
