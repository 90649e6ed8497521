#include "doctor/Examination.h"

#include "doctor/Access.h"
#include "doctor/probes/Probes.h"

#include <openssl/rand.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace doctor {

namespace {

/// Writing to a server that has gone is a failure to be told, not the end of the process, as long as this object lives.
class BrokenPipesIgnored
{
public:
    BrokenPipesIgnored() : m_before(std::signal(SIGPIPE, SIG_IGN)) {}
    ~BrokenPipesIgnored() { static_cast<void>(std::signal(SIGPIPE, m_before)); }
    BrokenPipesIgnored(const BrokenPipesIgnored&) = delete;
    BrokenPipesIgnored& operator=(const BrokenPipesIgnored&) = delete;

private:
    using Handler = void (*)(int);
    Handler m_before;
};

// As the library finds it.
std::string directoryIn(const std::string& commandUrl)
{
    const std::string::size_type slash = commandUrl.find('/', commandUrl.rfind(':') + 1);
    return commandUrl.empty() || slash == std::string::npos ? "" : commandUrl.substr(slash);
}

} // namespace

std::string uniqueName()
{
    std::array<unsigned char, 8> bytes = {};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
        throw std::runtime_error("There are no random numbers for a file name.");
    }
    constexpr char kDigits[] = "0123456789abcdef";
    std::string name = "sftpclient-doctor-";
    for (const unsigned int byte : bytes) {
        name.append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xfU]);
    }
    return name;
}

Report examine(const Question& question)
{
    const BrokenPipesIgnored brokenPipesIgnored;
    const Access access(question.request, question.limit);
    const std::string missing = uniqueName();
    Report report;
    report.scheme = access.scheme;
    report.url = question.request.remotePath;
    report.host = access.host;
    report.port = question.request.port;
    report.trust = access.trust;
    report.clearLogin = question.clearLogin;
    report.proxy = question.proxy;
    report.commandDirectory = directoryIn(question.commandUrl);

    probeLibcurl(report);
    probeContact(access, report);
    probeTls(access, report);
    probeHostKey(access, report);
    probeTest(access, missing, report);
    probeListing(access, report);
    probeClearUser(access, report);
    probeBareLogin(access, missing, report);
    return report;
}

} // namespace doctor
