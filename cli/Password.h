#ifndef SFTPCLIENT_CLI_PASSWORD_H
#define SFTPCLIENT_CLI_PASSWORD_H

#include <string>

/// The longest password that is taken, in bytes.
constexpr std::string::size_type kLongestPassword = 1023;

/// Reads the password into `password`: the first line of the file `file`; or where that is empty, the environment
/// variable SFTPCLIENT_PASSWORD; or where there is none, what the user types at the terminal after a prompt that names
/// `user`. No other copy of it is left behind. Throws `UsageError` when there is no password, or one that a server's
/// command cannot hold.
void readPassword(const std::string& file, const std::string& user, std::string& password);

/// Overwrites `text` with zero bytes when it goes out of scope.
class WipedAtEnd
{
public:
    explicit WipedAtEnd(std::string& text) : m_text(text) {}
    ~WipedAtEnd();
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    std::string& m_text;
};

/// Reads one line from `descriptor` into `line`, without its end (LF or CR LF). One byte at a time, so that no buffer
/// keeps a copy. False at an end of file before any byte, and when `interruption`, a descriptor or -1 for none, can be
/// read first. Throws `UsageError` for a longer line than a password, `std::system_error` when reading fails.
bool readSecretLine(int descriptor, int interruption, std::string& line);

#endif
