#include "support/Lines.h"

#include <base/Descriptor.h>
#include <base/UsageError.h>
#include <credentials/Password.h>
#include <credentials/TerminalPrompt.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <array>
#include <csignal>
#include <fstream>

namespace {

std::string readUpTo(int descriptor, const std::string& end)
{
    std::string text;
    char byte = '\0';
    while (text.find(end) == std::string::npos && read(descriptor, &byte, 1) == 1) {
        text.append(1, byte);
    }
    return text;
}

std::string readToEnd(int descriptor)
{
    std::string text;
    char byte = '\0';
    while (read(descriptor, &byte, 1) == 1) {
        text.append(1, byte);
    }
    return text;
}

/// A child process that prompts for a password on its own terminal, and this process at the keyboard.
class Prompt
{
public:
    /// `typedAhead`: a line that is typed before the prompt.
    explicit Prompt(const std::string& typedAhead = "")
    {
        std::array<int, 2> answer = {-1, -1};
        if (openpty(&m_keyboard, &m_terminal, nullptr, nullptr, nullptr) != 0 || pipe(answer.data()) != 0) {
            throw std::runtime_error("no terminal");
        }
        m_answer = answer[0];
        if (!typedAhead.empty()) {
            type(typedAhead);
            pollfd arrived = {m_terminal, POLLIN, 0}; // the system passes keys on when it has time
            poll(&arrived, 1, -1);
        }
        m_child = fork();
        if (m_child == 0) {
            ask(answer[1]);
        }
        close(answer[1]);
    }
    ~Prompt()
    {
        close(m_answer);
        close(m_keyboard);
        close(m_terminal);
    }
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;

    std::string shownUpTo(const std::string& end) const { return readUpTo(m_keyboard, end); }

    void type(const std::string& keys) const
    {
        ASSERT_EQ(static_cast<ssize_t>(keys.size()), write(m_keyboard, keys.data(), keys.size()));
    }

    /// What the child read, or how it refused.
    std::string answer() const { return readToEnd(m_answer); }

    /// Waits for the child's end.
    int ended() const
    {
        int status = 0;
        return waitpid(m_child, &status, 0) == m_child ? status : -1;
    }

    /// All that has been shown and not been read yet.
    std::string shownRest() const
    {
        fcntl(m_keyboard, F_SETFL, O_NONBLOCK);
        return readToEnd(m_keyboard);
    }

    bool echoes() const
    {
        termios mode = {};
        return tcgetattr(m_terminal, &mode) == 0 && (mode.c_lflag & ECHO) != 0;
    }

    /// What was typed and not read.
    int unread() const
    {
        int bytes = -1;
        return ioctl(m_terminal, FIONREAD, &bytes) == 0 ? bytes : -1;
    }

    /// Whether the child blocks `signal`.
    bool putsOff(int signal) const
    {
        std::ifstream status("/proc/" + std::to_string(m_child) + "/status");
        for (std::string word; status >> word;) {
            if (word == "SigBlk:" && status >> word) {
                return ((std::stoull(word, nullptr, 16) >> static_cast<unsigned>(signal - 1)) & 1U) != 0;
            }
        }
        return false;
    }

private:
    [[noreturn]] void ask(int answer) const
    {
        // As a terminal's user has them, even where this process runs in the background.
        for (const int signal : {SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGTSTP}) {
            static_cast<void>(std::signal(signal, SIG_DFL));
        }
        // login_tty takes the standard streams, too.
        login_tty(m_terminal);
        std::string text;
        try {
            promptForPassword("me", text);
        } catch (const UsageError& error) {
            text = error.what();
        }
        _exit(write(answer, text.data(), text.size()) < 0 ? 1 : 0);
    }

    int m_keyboard = -1;
    int m_terminal = -1;
    int m_answer = -1;
    pid_t m_child = -1;
};

constexpr char kQuestion[] = "Password of me: ";

} // namespace

TEST(Prompt, ReadsALineWithoutEchoingIt)
{
    const Prompt prompt;
    EXPECT_EQ(kQuestion, prompt.shownUpTo(kQuestion));
    EXPECT_FALSE(prompt.echoes());
    prompt.type("top secret\n");
    EXPECT_EQ("top secret", prompt.answer());
    EXPECT_EQ(0, prompt.ended());
    EXPECT_EQ("\r\n", prompt.shownRest());
    EXPECT_TRUE(prompt.echoes());
}

TEST(Prompt, RejectsEmptyInputAndRestoresTheTerminal)
{
    const Prompt prompt;
    EXPECT_EQ(kQuestion, prompt.shownUpTo(kQuestion));
    prompt.type("\x04");
    EXPECT_EQ("No password was typed.", prompt.answer());
    EXPECT_EQ(0, prompt.ended());
    EXPECT_TRUE(prompt.echoes());
}

TEST(Prompt, RejectsATooLongLineAndRestoresTheTerminal)
{
    const Prompt prompt;
    EXPECT_EQ(kQuestion, prompt.shownUpTo(kQuestion));
    prompt.type(std::string(kLongestPassword + 1, 'x') + "\n");
    EXPECT_EQ("The password must not be longer than 1023 bytes.", prompt.answer());
    EXPECT_EQ(0, prompt.ended());
    EXPECT_EQ("", prompt.shownRest());
    EXPECT_TRUE(prompt.echoes());
}

TEST(Prompt, DiscardsWhatWasTypedBeforeThePrompt)
{
    const Prompt prompt("typed ahead\n");
    prompt.shownUpTo(kQuestion);
    prompt.type("top secret\n");
    EXPECT_EQ("top secret", prompt.answer());
    EXPECT_EQ(0, prompt.ended());
}

TEST(Prompt, DiscardsTheRestOfATooLongLine)
{
    const Prompt prompt;
    prompt.shownUpTo(kQuestion);
    prompt.type(std::string(2 * kLongestPassword, 'x') + "\n");
    EXPECT_EQ("The password must not be longer than 1023 bytes.", prompt.answer());
    EXPECT_EQ(0, prompt.ended());
    EXPECT_EQ(0, prompt.unread());
}

// A stop would leave the shell with a terminal that does not echo.
TEST(Prompt, DefersSignalsThatWouldStopOrEndIt)
{
    const Prompt prompt;
    prompt.shownUpTo(kQuestion);
    for (const int signal : {SIGTSTP, SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        EXPECT_TRUE(prompt.putsOff(signal)) << signal;
    }
    EXPECT_FALSE(prompt.putsOff(SIGUSR1));
    prompt.type("\n");
    EXPECT_EQ(0, prompt.ended());
}

TEST(Prompt, RestoresTheTerminalBeforeASignalEndsTheProcess)
{
    const Prompt prompt;
    EXPECT_EQ(kQuestion, prompt.shownUpTo(kQuestion));
    EXPECT_FALSE(prompt.echoes());
    prompt.type("half a sec\x03");
    EXPECT_EQ("", prompt.answer());
    const int ended = prompt.ended();
    EXPECT_TRUE(WIFSIGNALED(ended) && WTERMSIG(ended) == SIGINT) << ended;
    EXPECT_TRUE(prompt.echoes());
    EXPECT_FALSE(holds("half", prompt.shownRest()));
}
