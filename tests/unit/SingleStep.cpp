#include "SingleStep.h"

#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

// The signals with which the child reports that it is about to call the function, and has called it.
constexpr int kBegin = SIGSTOP;
constexpr int kEnd = SIGUSR1;

class Child
{
public:
    Child(std::string& text, void (*overwrite)(std::string&)) : m_pid(fork())
    {
        if (m_pid == 0) {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
                _exit(errno);
            }
            static_cast<void>(raise(kBegin));
            overwrite(text);
            static_cast<void>(raise(kEnd));
            _exit(0);
        }
        wait();
    }
    ~Child()
    {
        if (m_pid > 0 && WIFSTOPPED(m_status)) {
            kill(m_pid, SIGKILL);
            wait();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    bool stoppedBy(int signal) const { return m_pid > 0 && WIFSTOPPED(m_status) && WSTOPSIG(m_status) == signal; }
    int status() const { return m_status; }

    bool step()
    {
        if (ptrace(PTRACE_SINGLESTEP, m_pid, nullptr, nullptr) != 0) {
            return false;
        }
        wait();
        return stoppedBy(SIGTRAP);
    }

    std::string read(char* address, std::size_t size) const
    {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; i += sizeof(long)) {
            const long word = ptrace(PTRACE_PEEKDATA, m_pid, address + i, nullptr);
            std::memcpy(&bytes[i], &word, sizeof word);
        }
        return bytes;
    }

    void write(char* address, const std::string& bytes) const
    {
        for (std::size_t i = 0; i < bytes.size(); i += sizeof(long)) {
            long word = 0;
            std::memcpy(&word, &bytes[i], sizeof word);
            ptrace(PTRACE_POKEDATA, m_pid, address + i, word);
        }
    }

private:
    void wait()
    {
        while (m_pid > 0 && waitpid(m_pid, &m_status, 0) < 0 && errno == EINTR) {
        }
    }

    pid_t m_pid;
    int m_status = 0;
};

} // namespace

Overwriting watchOverwriting(std::string& text, void (*overwrite)(std::string&))
{
    Overwriting seen;
    const std::string original = text;
    char* const address = text.data();
    Child child(text, overwrite);
    if (!child.stoppedBy(kBegin)) {
        seen.obstacle = "No child process can be traced here (wait status " + std::to_string(child.status()) +
                        "): allow ptrace, for a container with --cap-add=SYS_PTRACE.";
        return seen;
    }
    while (child.step()) {
        const std::string now = child.read(address, original.size());
        const std::size_t zeros = now.find_first_not_of('\0');
        if (zeros == std::string::npos) {
            ++seen.passes;
            child.write(address, original);
        } else if (now.compare(zeros, std::string::npos, original, zeros, std::string::npos) != 0) {
            seen.fromFirstToLast = false;
        }
    }
    if (!child.stoppedBy(kEnd)) {
        seen.obstacle = "The traced child did not come to the function's end (wait status " +
                        std::to_string(child.status()) + "): run the test under no other tracer.";
    }
    return seen;
}
