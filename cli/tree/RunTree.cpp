#include "tree/RunTree.h"

#include "base/RequestOf.h"
#include "base/WipedAtEnd.h"
#include "credentials/Login.h"
#include "operation/Interruption.h"
#include "operation/SessionOptionsOf.h"
#include "tree/TreeRun.h"

#include <CurlProcess.h>
#include <EscapeControlBytes.h>
#include <HostLog.h>

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <stdexcept>

namespace {

constexpr winsize kUsualTerminal = {24, 80, 0, 0};

/// Points the host's log, as far as it goes to standard error, to nowhere: there are several records for each file, and
/// some of failures that are expected.
class QuietLog
{
public:
    QuietLog() : m_nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC))
    {
        HostLog::instance().setDescriptor(m_nowhere.isOpen() ? m_nowhere.get() : STDERR_FILENO);
    }
    ~QuietLog() { HostLog::instance().setDescriptor(STDERR_FILENO); }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

private:
    Descriptor m_nowhere;
};

winsize sizeOfTerminal()
{
    winsize size = {};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
    return isKnown ? size : kUsualTerminal;
}

SessionOptions optionsOf(const Arguments& arguments, Board& board)
{
    SessionOptions options = sessionOptionsOf(arguments);
    options.maxConnections = arguments.tree.jobs;
    options.callTimeout = {};
    options.sendRate = (arguments.rate + arguments.tree.jobs - 1) / arguments.tree.jobs;
    options.receiveRate = options.sendRate;
    // With a piece of the list only, it would delete what is there.
    options.requireListingEnd = arguments.operation == Operation::Pull && arguments.tree.deletes;
    options.syncDownload = false; // once for all of them: see syncFiles()
    options.progress = [&board](const TransferProgress& now) { board.progress(now); };
    return options;
}

// What has been pulled is on the disk when the command ends, as far as the system can tell.
void syncFiles(const std::string& directory, TreeResult& result)
{
    const Descriptor folder(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if ((!folder.isOpen() || syncfs(folder.get()) != 0) && result.code == 0) {
        result.code = CURLE_WRITE_ERROR;
        result.text = std::string("what was moved may not be on the disk: ") + std::strerror(errno);
    }
}

TreeResult runShown(const Arguments& arguments, const SFtpRequest& request)
{
    const QuietLog quiet;
    const CurlProcess curl;
    Board board;
    SFtpSession session = sessionWith(optionsOf(arguments, board));
    const PasswordMask mask(request.userName, request.password);
    RemoteTree remote(session, request, mask);
    LiveLines lines(std::cerr);
    const bool isShown = !arguments.quiet && !arguments.tree.dryRun && isatty(STDERR_FILENO) == 1;
    const auto begin = std::chrono::steady_clock::now();
    TreeRun run(arguments, session, remote, board, [&] {
        if (isShown) {
            const winsize size = sizeOfTerminal();
            lines.show(board.lines(arguments.name, std::chrono::steady_clock::now() - begin, size.ws_col), size.ws_row);
        }
    });
    TreeResult result = run.run();
    lines.clear();
    if (arguments.operation == Operation::Pull && result.moved > 0 && !arguments.tree.dryRun) {
        syncFiles(arguments.local, result);
    }
    result.url = request.remotePath;
    result.hint = hintOf(result);
    for (const FailedPath& each : remote.refusedTimes()) {
        std::cerr << arguments.name << ": " << escapeControlBytes(each.path)
                  << ": the server did not set the file's time: " << shownText(each.text) << "\n";
    }
    if (arguments.tree.checksum && remote.lacksChecksums()) {
        std::cerr << arguments.name
                  << ": the server computes no checksums (HASH with SHA-256, XSHA256, XCRC): sizes and times were "
                     "compared\n";
    }
    return result;
}

// All that must be in order before a signal ends the process ends with this function.
TreeResult runInOrder(const Arguments& arguments)
{
    SFtpRequest request = requestOf(arguments);
    const WipedAtEnd wiped(request.password);
    readLogin(arguments, request);
    const Interruption interruption;
    return runShown(arguments, request);
}

void report(const Arguments& arguments, const TreeResult& result)
{
    if (!arguments.json) {
        for (const TreeAction& each : result.actions) {
            std::cout << nameOfStep(each.step) << " " << escapeControlBytes(each.path.empty() ? "." : each.path)
                      << "\n";
        }
    }
    for (const std::string& path : result.skipped) {
        std::cerr << result.operation << ": " << escapeControlBytes(path) << ": a link or no regular file; left out\n";
    }
    for (const FailedPath& each : result.failed) {
        if (!each.path.empty()) {
            std::cerr << result.operation << ": " << escapeControlBytes(each.path) << ": " << each.code << " "
                      << shownText(each.text) << "\n";
        }
    }
    if (!result.hint.empty()) {
        std::cerr << "hint: " << result.hint << "\n";
    }
    std::cerr << lineOf(result) << std::endl;
    if (arguments.json) {
        std::cout << jsonOf(result) << "\n";
    }
    if (!std::cout.flush()) {
        throw std::runtime_error("the result cannot be written to standard output");
    }
}

} // namespace

int runTree(const Arguments& arguments)
{
    const TreeResult result = runInOrder(arguments);
    report(arguments, result);
    if (!result.signal.empty()) {
        endBySignal(Interruption::signal());
    }
    return result.code;
}
