#include "doctor/Child.h"

#include "base/ThrowErrno.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <utility>

namespace doctor {

namespace {

// Names of a million files fit in.
constexpr rlim_t kLongestFile = rlim_t{64} << 20;

// Beside what the process has when it begins.
#ifdef __SANITIZE_ADDRESS__ // which keeps what is freed
constexpr rlim_t kMostMemory = rlim_t{512} << 20;
#else
constexpr rlim_t kMostMemory = rlim_t{32} << 20;
#endif

void require(bool done, const char* what)
{
    if (!done) {
        throwErrno(what);
    }
}

void limit(int resource, rlim_t most)
{
    rlimit limits = {};
    require(getrlimit(static_cast<__rlimit_resource>(resource), &limits) == 0, "a limit is unknown");
    limits.rlim_cur = std::min(limits.rlim_cur, most);
    require(setrlimit(static_cast<__rlimit_resource>(resource), &limits) == 0, "a limit cannot be set");
}

// The files are in memory, which a listing without end must not fill.
void limitFiles()
{
    limit(RLIMIT_FSIZE, kLongestFile);
    static_cast<void>(signal(SIGXFSZ, SIG_IGN));
}

// What counts for the limit is the sixth number there, in pages.
void limitMemory()
{
    std::ifstream file("/proc/self/statm");
    rlim_t pages = 0;
    for (int i = 0; i < 6; ++i) {
        file >> pages;
    }
    require(!file.fail(), "the memory in use is unknown");
    limit(RLIMIT_DATA, pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + kMostMemory);
}

// What libcurl prints by itself, the password among it, is for nobody.
void silence()
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    require(nowhere >= 0 && dup2(nowhere, STDOUT_FILENO) >= 0 && dup2(nowhere, STDERR_FILENO) >= 0,
            "the output cannot be silenced");
}

void writeAll(int results, const void* bytes, std::size_t size)
{
    for (std::size_t written = 0; written < size;) {
        const ssize_t count = write(results, static_cast<const char*>(bytes) + written, size - written);
        require(count >= 0, "a result is lost");
        written += static_cast<std::size_t>(count);
    }
}

[[noreturn]] void runApart(const std::function<void(int)>& work, int results)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        limitFiles();
        limitMemory();
        silence();
        work(results);
    } catch (const std::exception&) {
        _exit(1);
    }
    _exit(0);
}

} // namespace

Child::Child(const std::function<void(int)>& work)
{
    std::array<int, 2> ends = {};
    require(pipe2(ends.data(), O_CLOEXEC) == 0, "cannot create a pipe");
    m_process = fork();
    if (m_process == 0) {
        runApart(work, ends[1]);
    }
    close(ends[1]);
    m_results = ends[0];
    require(m_process > 0, "cannot start a process");
}

Child::~Child()
{
    close(m_results);
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
}

std::string Child::finish()
{
    int status = 0;
    waitpid(m_process, &status, 0);
    m_process = -1;
    if (!WIFEXITED(status)) {
        return "ended without a result";
    }
    return WEXITSTATUS(status) == 0 ? "" : "needed more memory than it may have";
}

Child::Event Child::wait(const SignalsHeld& signals, std::chrono::steady_clock::time_point end) const
{
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        std::array<pollfd, 2> waits = {{{m_results, POLLIN, 0}, {signals.descriptor(), POLLIN, 0}}};
        const int ready = poll(waits.data(), waits.size(), static_cast<int>(std::max<decltype(left)>(0, left)));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return Event::Late;
        }
        return waits[1].revents != 0 ? Event::Signal : Event::Result;
    }
}

Child::Outcome Child::collect(const SignalsHeld& signals, std::chrono::steady_clock::time_point end)
{
    Outcome outcome;
    bool goesOn = true;
    while (goesOn) {
        outcome.event = wait(signals, end);
        goesOn = outcome.event == Event::Result && takePart();
    }
    if (outcome.event == Event::Result) {
        outcome.failure = finish();
    }
    // What it has given before a signal came counts, also where this process was slower than the signal.
    pollfd more = {m_results, POLLIN, 0};
    while (outcome.event != Event::Result && poll(&more, 1, 0) > 0 && takePart()) {
    }
    outcome.result = m_result;
    return outcome;
}

bool Child::takePart()
{
    std::array<std::uint8_t, 65536> part = {};
    const ssize_t got = read(m_results, part.data(), part.size());
    m_bytes.insert(m_bytes.end(), part.begin(), part.begin() + std::max<ssize_t>(0, got));
    takeResults();
    return got > 0;
}

// Each follows its size.
void Child::takeResults()
{
    std::size_t size = 0;
    while (m_bytes.size() >= sizeof size) {
        std::memcpy(&size, m_bytes.data(), sizeof size);
        if (m_bytes.size() - sizeof size < size) {
            return;
        }
        const auto begin = m_bytes.begin() + sizeof size;
        const auto end = begin + static_cast<std::ptrdiff_t>(size);
        m_result.assign(begin, end);
        m_bytes.erase(m_bytes.begin(), end);
    }
}

void writeResult(int results, const std::vector<std::uint8_t>& bytes)
{
    const std::size_t size = bytes.size();
    writeAll(results, &size, sizeof size);
    writeAll(results, bytes.data(), size);
}

} // namespace doctor
