#include "credentials/TerminalPrompt.h"

#include "base/Descriptor.h"
#include "base/Signals.h"
#include "base/ThrowErrno.h"
#include "base/UsageError.h"
#include "credentials/Password.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// Keeps a terminal from showing what is typed as long as this object lives.
class EchoOff
{
public:
    explicit EchoOff(int terminal) : m_terminal(terminal)
    {
        if (tcgetattr(m_terminal, &m_before) != 0) {
            throwErrno("the terminal's mode cannot be read");
        }
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
        if (tcsetattr(m_terminal, TCSAFLUSH, &silent) != 0) {
            throwErrno("the terminal's echo cannot be turned off");
        }
    }
    ~EchoOff() { tcsetattr(m_terminal, TCSAFLUSH, &m_before); }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    int m_terminal;
    termios m_before = {};
};

void show(int terminal, const std::string& text)
{
    if (write(terminal, text.data(), text.size()) < 0) {
        throwErrno("the terminal cannot be written to");
    }
}

bool askWithoutEcho(int terminal, const std::string& question, std::string& answer)
{
    // Made in this order: the terminal is restored first, then a signal that came meanwhile takes effect.
    const SignalsBlocked noStop(signalSet({SIGTSTP}));
    const SignalsHeld interruption({SIGINT, SIGTERM, SIGHUP, SIGQUIT});
    const EchoOff echoOff(terminal);
    show(terminal, question);
    const bool answered = readSecretLine(terminal, interruption.descriptor(), answer);
    show(terminal, "\n");
    return answered;
}

} // namespace

void promptForPassword(const std::string& user, std::string& password)
{
    const Descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (!terminal.isOpen()) {
        throw UsageError("There is no password and no terminal to ask for one: give --password-file FILE, or set "
                         "SFTPCLIENT_PASSWORD.");
    }
    if (!askWithoutEcho(terminal.get(), "Password of " + user + ": ", password)) {
        throw UsageError("No password was typed.");
    }
}
