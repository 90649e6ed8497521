#include "harness/TerminalCommand.h"

#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

TerminalCommand::TerminalCommand(ProcessSetup setup)
{
    int keyboard = -1;
    int terminal = -1;
    std::array<char, 128> name = {};
    if (openpty(&keyboard, &terminal, name.data(), nullptr, nullptr) != 0) {
        throw std::runtime_error("no terminal");
    }
    m_keyboard = std::make_unique<Descriptor>(keyboard);
    // Otherwise an interrupt from the keyboard would discard what the command is writing at that moment.
    termios mode = {};
    tcgetattr(terminal, &mode);
    mode.c_lflag |= NOFLSH;
    tcsetattr(terminal, TCSANOW, &mode);
    // Wait until the command has it open: until then, reads fail.
    const Descriptor open(terminal);
    setup.terminal = name.data();
    m_process = std::make_unique<Process>(setup);
}

std::string TerminalCommand::shownUpTo(const std::string& text)
{
    while (m_shown.find(text) == std::string::npos) {
        if (!readMore()) {
            throw std::runtime_error("\"" + text + "\" was not shown, but \"" + m_shown + "\"");
        }
    }
    return m_shown.substr(0, m_shown.find(text));
}

void TerminalCommand::type(const std::string& keys) const
{
    if (write(m_keyboard->get(), keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        throw std::runtime_error("cannot type");
    }
}

int TerminalCommand::wait()
{
    while (readMore()) {
    }
    return m_process->wait();
}

bool TerminalCommand::readMore()
{
    std::array<char, 4096> block = {};
    const ssize_t count = read(m_keyboard->get(), block.data(), block.size());
    if (count > 0) {
        m_shown.append(block.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}
