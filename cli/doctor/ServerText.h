#ifndef SFTPCLIENT_CLI_DOCTOR_SERVERTEXT_H
#define SFTPCLIENT_CLI_DOCTOR_SERVERTEXT_H

#include "output/PasswordMask.h"

#include <string>

namespace doctor {

/// A text that a server has a hand in. It is parsed as it came and shown without the password, which a server may
/// repeat anywhere; it becomes neither by itself.
class ServerText
{
public:
    ServerText() = default;
    ServerText(std::string raw, const PasswordMask& mask);

    /// What follows `beginning`, which is shown before it as it is. Where the password begins there and ends here,
    /// nothing of it is shown.
    static ServerText following(const std::string& beginning, std::string raw, const PasswordMask& mask);

    /// One that was taken apart.
    static ServerText restored(std::string raw, std::string shown);

    bool isEmpty() const { return m_raw.empty(); }

    /// For decisions; not to be shown.
    const std::string& raw() const { return m_raw; }

    /// For people and programs to read. Control bytes are still in it.
    const std::string& shown() const { return m_shown; }

private:
    std::string m_raw;
    std::string m_shown;
};

} // namespace doctor

#endif
