#include "doctor/WriteTrial.h"

#include "base/ThrowErrno.h"
#include "doctor/CleanUp.h"
#include "doctor/RoundTrip.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): POSIX's signal sets are not in <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>

namespace doctor {

namespace {

// A step has as many waits as this, at most, before the trial is given up.
constexpr int kWaits = 3;

// Names of a million files fit in.
constexpr rlim_t kLongestFile = rlim_t{64} << 20;

void require(bool done, const char* what)
{
    if (!done) {
        throwErrno(what);
    }
}

/// Holds the signals that would end the process back as long as this object lives, and tells of the first.
class SignalsHeld
{
public:
    SignalsHeld()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction action = {};
            sigaction(signal, nullptr, &action);
            // What is ignored, as under nohup, stays so; held back, it would come all the same.
            if (action.sa_handler != SIG_IGN) {
                sigaddset(&signals, signal);
            }
        }
        pthread_sigmask(SIG_BLOCK, &signals, &m_before);
        m_descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
        require(m_descriptor >= 0, "signals cannot be waited for");
    }
    ~SignalsHeld()
    {
        close(m_descriptor);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

    int descriptor() const { return m_descriptor; }

    /// The signal that came, or 0.
    int take() const
    {
        signalfd_siginfo came = {};
        return read(m_descriptor, &came, sizeof came) == sizeof came ? static_cast<int>(came.ssi_signo) : 0;
    }

private:
    sigset_t m_before = {};
    int m_descriptor = -1;
};

// The files are in memory, which a listing without end must not fill.
void limitFiles()
{
    rlimit limit = {};
    require(getrlimit(RLIMIT_FSIZE, &limit) == 0, "the limit of files is unknown");
    limit.rlim_cur = std::min(limit.rlim_cur, kLongestFile);
    require(setrlimit(RLIMIT_FSIZE, &limit) == 0, "files cannot be limited");
    static_cast<void>(signal(SIGXFSZ, SIG_IGN));
}

// What libcurl prints by itself, the password among it, is for nobody.
void silence()
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    require(nowhere >= 0 && dup2(nowhere, STDOUT_FILENO) >= 0 && dup2(nowhere, STDERR_FILENO) >= 0,
            "the output cannot be silenced");
}

[[noreturn]] void runApart(const Question& question, const std::string& name, int results)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        limitFiles();
        silence();
        makeRoundTrip(question, name, [results](const StepNews& news) {
            // Smaller than what a pipe takes at once.
            require(write(results, &news, sizeof news) == sizeof news, "the result of a step is lost");
        });
    } catch (const std::exception&) {
        _exit(1);
    }
    _exit(0);
}

/// The process in which the library works; ended with this object at the latest.
class Worker
{
public:
    Worker(const Question& question, const std::string& name)
    {
        std::array<int, 2> ends = {};
        require(pipe2(ends.data(), O_CLOEXEC) == 0, "cannot create a pipe");
        m_process = fork();
        if (m_process == 0) {
            runApart(question, name, ends[1]);
        }
        close(ends[1]);
        m_results = ends[0];
        require(m_process > 0, "cannot start a process");
    }
    ~Worker()
    {
        close(m_results);
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    int results() const { return m_results; }

    /// Waits for its end; whether it got to the end of its work.
    bool finishes()
    {
        int status = 0;
        waitpid(m_process, &status, 0);
        m_process = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t m_process = -1;
    int m_results = -1;
};

// Takes in the results until there are no more; a signal, or a step that takes too long, ends that early.
int follow(Worker& worker, const SignalsHeld& signals, std::chrono::milliseconds limit, RoundTrip& roundTrip)
{
    const std::chrono::milliseconds patience = kWaits * limit;
    for (;;) {
        std::array<pollfd, 2> waits = {{{worker.results(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}}};
        const int ready = poll(waits.data(), waits.size(), static_cast<int>(patience.count()));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            roundTrip.failure = "did not finish within " +
                                std::to_string(std::chrono::ceil<std::chrono::seconds>(patience).count()) + " seconds";
            return 0;
        }
        if (waits[1].revents != 0) {
            return signals.take();
        }
        StepNews news = {};
        if (read(worker.results(), &news, sizeof news) != sizeof news) {
            roundTrip.failure = worker.finishes() ? "" : "ended without a result";
            return 0;
        }
        record(news, roundTrip);
    }
}

// Without a login a trial shows nothing new; a directory that an upload would make would be left behind.
std::string obstacle(const Report& report)
{
    const bool loggedIn =
        report.test.loggedIn() || report.bare.loggedIn() || (report.scheme == Scheme::Sftp && report.test.succeeded());
    const bool missing = report.test.code == CURLE_REMOTE_ACCESS_DENIED ||
                         report.bare.code == CURLE_REMOTE_ACCESS_DENIED ||
                         report.test.code == CURLE_REMOTE_FILE_NOT_FOUND;
    if (missing) {
        return "the directory is not there, and an upload would leave it behind";
    }
    return loggedIn ? "" : "no login works";
}

} // namespace

int tryWriting(const Question& question, Report& report)
{
    RoundTrip& roundTrip = report.roundTrip.emplace();
    roundTrip.name = uniqueName();
    roundTrip.notMade = obstacle(report);
    if (!roundTrip.notMade.empty()) {
        return 0;
    }
    const SignalsHeld signals;
    int signal = 0;
    {
        Worker worker(question, roundTrip.name);
        signal = follow(worker, signals, question.limit, roundTrip);
    }
    cleanUp(question, report, roundTrip);
    return signal != 0 ? signal : signals.take();
}

} // namespace doctor
