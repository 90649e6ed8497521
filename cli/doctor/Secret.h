#ifndef SFTPCLIENT_CLI_DOCTOR_SECRET_H
#define SFTPCLIENT_CLI_DOCTOR_SECRET_H

#include <string>

namespace doctor {

/// Keeps the password out of everything that is kept or shown: a server may well repeat it in a reply.
class Secret
{
public:
    /// REQUIRES: `password` outlives this object.
    explicit Secret(const std::string& password) : m_password(password) {}

    /// `text` with "****" wherever the password stood.
    std::string hiddenIn(std::string text) const;

private:
    const std::string& m_password;
};

} // namespace doctor

#endif
