#ifndef CLI_HARNESS_TERMINALCOMMAND_H
#define CLI_HARNESS_TERMINALCOMMAND_H

#include "harness/RunCommand.h"

#include <base/Descriptor.h>

#include <memory>
#include <string>

/// The command, or another program, on its own terminal, and this process at the keyboard.
class TerminalCommand
{
public:
    explicit TerminalCommand(ProcessSetup setup);

    /// Waits until `text` is shown. Returns what was shown until then.
    std::string shownUpTo(const std::string& text);

    void type(const std::string& keys) const;
    void signal(int number) const { m_process->signal(number); }

    /// Waits for the command's end; see `Process::wait`.
    int wait();

    /// All that has been shown, with the terminal's line ends. Whole after `wait`.
    const std::string& shown() const { return m_shown; }

private:
    bool readMore();

    std::unique_ptr<Descriptor> m_keyboard;
    std::unique_ptr<Process> m_process;
    std::string m_shown;
};

#endif
