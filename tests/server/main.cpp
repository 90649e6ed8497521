// The test server as a program: prints its port and serves until a signal, or the end of its input, ends it.
#include "FtpServer.h"

#include <CLI/CLI.hpp>

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <system_error>

namespace {

using namespace testserver;
using namespace std::chrono_literals;

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("The file " + path + " cannot be read.");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string firstLineOf(const std::string& path)
{
    const std::string content = contentOf(path);
    return content.substr(0, content.find_first_of("\r\n"));
}

void writeFile(const std::filesystem::path& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary);
    if (!(file << content).flush()) {
        throw std::runtime_error("The file " + path.string() + " cannot be written.");
    }
}

void writePair(const std::filesystem::path& folder, const std::string& name, const Certificate& certificate)
{
    writeFile(folder / (name + ".pem"), certificate.certificatePem);
    const std::filesystem::path key = folder / (name + ".key");
    writeFile(key, certificate.privateKeyPem);
    // An existing file keeps its mode.
    std::filesystem::permissions(key, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// A CA, a server certificate signed by it, and bad ones. The CA's own key is not kept.
Certificate makeCertificates(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    const CertificateAuthority authority;
    writeFile(folder / "ca.pem", authority.certificatePem());
    writeFile(folder / "ca.der", authority.certificateDer());
    writeFile(folder / "other-ca.pem", CertificateAuthority("Another test CA").certificatePem());
    Certificate server = authority.issue();
    writePair(folder, "server", server);
    CertificateOptions expired;
    expired.notBefore = -48h;
    expired.notAfter = -24h;
    writePair(folder, "expired", authority.issue(expired));
    CertificateOptions early;
    early.notBefore = 24h;
    early.notAfter = 48h;
    writePair(folder, "not-yet-valid", authority.issue(early));
    CertificateOptions wrong;
    wrong.dnsNames = {"elsewhere.example"};
    wrong.addresses = {};
    writePair(folder, "wrong-host", authority.issue(wrong));
    writePair(folder, "self-signed", makeSelfSigned());
    ::umask(before);
    return server;
}

struct Options
{
    ServerConfig config;
    std::string passwordFile;
    std::string certificateFile;
    std::string keyFile;
    std::string transcriptFile;
    std::string certificateFolder;
    bool untilEof = false;
    unsigned stallLimit = 0;
    std::vector<std::string> faults;
};

void declare(CLI::App& app, Options& options)
{
    static const std::map<std::string, TlsMode> kModes = {
        {"plain", TlsMode::Plain}, {"explicit", TlsMode::Explicit}, {"implicit", TlsMode::Implicit}};
    app.add_option("--root", options.config.root, "Folder to serve")->check(CLI::ExistingDirectory);
    app.add_option("--user", options.config.user, "The one user (backup)");
    app.add_option("--password-file", options.passwordFile,
                   "File whose first line is the password; without it, FTP_TEST_PASSWORD in the environment");
    app.add_option("--tls", options.config.tls, "plain, explicit (as it is by default) or implicit")
        ->transform(CLI::CheckedTransformer(kModes, CLI::ignore_case));
    app.add_flag("--require-tls", options.config.tlsRequiredAtLogin, "Refuse logins without TLS");
    app.add_flag("--strict-upload-end", options.config.strictUploadEnd, "Refuse uploads without close_notify");
    app.add_option("--port", options.config.port, "Port on 127.0.0.1; a free one by default");
    auto* const certificate =
        app.add_option("--certificate", options.certificateFile, "The server's certificate and those above it, PEM");
    auto* const key = app.add_option("--key", options.keyFile, "Its key, PEM")->needs(certificate);
    certificate->needs(key);
    app.add_flag("--data-tickets", options.config.dataTickets, "Send session tickets on data connections");
    app.add_option("--stall-limit", options.stallLimit,
                   "Milliseconds after which a stall ends; 0, the default, is no limit")
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--until-eof", options.untilEof, "End when standard input ends");
    app.add_option("--transcript", options.transcriptFile, "File that gets the transcript of each session");
    app.add_option("--fault", options.faults, "A misbehaviour, such as SIZE=reply:550 no; may be repeated")
        ->allow_extra_args(false);
    app.add_option(
        "--make-certificates", options.certificateFolder,
        "Make a CA, server.pem and bad certificates in this folder; serve with server.pem if --root is given");
    app.footer(
        "Examples:\n"
        "  ftp-test-server --make-certificates certs\n"
        "  ftp-test-server --root served --password-file pw --certificate certs/server.pem --key certs/server.key\n"
        "  FTP_TEST_PASSWORD=x ftp-test-server --root served --tls plain --fault 'DATA=drop-after:1000'\n"
        "It prints \"listening on 127.0.0.1:PORT\" and serves until SIGTERM or SIGINT.\n"
        "README.md beside its source has all misbehaviours.");
}

void complete(Options& options)
{
    ServerConfig& config = options.config;
    if (!options.certificateFolder.empty()) {
        config.certificate = makeCertificates(options.certificateFolder);
    }
    if (!options.certificateFile.empty()) {
        config.certificate = {contentOf(options.certificateFile), contentOf(options.keyFile)};
    }
    if (!options.passwordFile.empty()) {
        config.password = firstLineOf(options.passwordFile);
    } else if (const char* password = std::getenv("FTP_TEST_PASSWORD")) {
        config.password = password;
    }
    for (const std::string& fault : options.faults) {
        config.faults.push_back(parseFault(fault));
    }
    config.keepTranscripts = false;
    config.stallLimit = std::chrono::milliseconds(options.stallLimit);
    if (!options.transcriptFile.empty()) {
        config.onSessionEnd = [path = options.transcriptFile](const Transcript& transcript) {
            std::ofstream file(path, std::ios::app);
            for (const std::string& line : transcript) {
                file << line << "\n";
            }
            file << "\n";
        };
    }
}

// A descriptor that becomes readable when a signal asks the program to end.
class EndSignals
{
public:
    // Blocked before the server's threads begin, so that all of them inherit the mask.
    EndSignals()
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGTERM);
        sigaddset(&signals, SIGINT);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        m_descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC);
        if (m_descriptor < 0) {
            throw std::system_error(errno, std::generic_category(), "No descriptor for signals can be had");
        }
    }
    ~EndSignals() { ::close(m_descriptor); }
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

bool inputHasEnded()
{
    std::array<char, 4096> dropped = {};
    return ::read(STDIN_FILENO, dropped.data(), dropped.size()) <= 0;
}

void serve(const Options& options)
{
    const EndSignals signals;
    const FtpServer server(options.config);
    std::cout << "listening on 127.0.0.1:" << server.port() << std::endl;
    std::array<pollfd, 2> watched = {
        {{signals.descriptor(), POLLIN, 0}, {options.untilEof ? STDIN_FILENO : -1, POLLIN, 0}}};
    do {
        if (::poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "Waiting for the end fails");
        }
    } while (watched[0].revents == 0 && (watched[1].revents == 0 || !inputHasEnded()));
}

} // namespace

int main(int argc, char** argv)
try {
    CLI::App app("An FTP server for tests: TLS, transcripts and misbehaviour to order. Loopback only.");
    Options options;
    declare(app, options);
    CLI11_PARSE(app, argc, argv);
    complete(options);
    if (!options.config.root.empty()) {
        serve(options);
    } else if (options.certificateFolder.empty()) {
        std::cerr << "Nothing to do: name a folder to serve with --root.\n";
        return 2;
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "ftp-test-server: " << error.what() << "\n";
    return 1;
}
