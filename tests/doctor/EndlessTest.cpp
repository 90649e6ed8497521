// Servers that let no probe end, and a user who does not wait.
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"
#include "support/LoopbackPort.h"

#include <nlohmann/json.hpp>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

template <auto release>
struct Release
{
    template <typename Type>
    void operator()(Type* object) const
    {
        release(object);
    }
};

/// An FTP server over implicit TLS that changes its keys, again and again, and says nothing: OpenSSL reads on and on.
class KeyUpdates
{
public:
    explicit KeyUpdates(const testserver::Certificate& certificate) : m_context(SSL_CTX_new(TLS_server_method()))
    {
        SSL_CTX_set_min_proto_version(m_context.get(), TLS1_3_VERSION);
        const auto read = [](const std::string& pem) {
            return std::unique_ptr<BIO, Release<BIO_free_all>>(
                BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
        };
        const std::unique_ptr<X509, Release<X509_free>> own(
            PEM_read_bio_X509(read(certificate.certificatePem).get(), nullptr, nullptr, nullptr));
        const std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>> key(
            PEM_read_bio_PrivateKey(read(certificate.privateKeyPem).get(), nullptr, nullptr, nullptr));
        SSL_CTX_use_certificate(m_context.get(), own.get());
        SSL_CTX_use_PrivateKey(m_context.get(), key.get());
        port.listen();
        m_thread = std::thread([this] { serve(); });
    }
    ~KeyUpdates()
    {
        port.stop();
        m_thread.join();
    }
    KeyUpdates(const KeyUpdates&) = delete;
    KeyUpdates& operator=(const KeyUpdates&) = delete;

    const LoopbackPort port;

private:
    void serve() const
    {
        for (int socket = port.accept(); socket >= 0; socket = port.accept()) {
            const std::unique_ptr<SSL, Release<SSL_free>> tls(SSL_new(m_context.get()));
            SSL_set_fd(tls.get(), socket);
            bool goesOn = SSL_accept(tls.get()) == 1;
            while (goesOn) {
                goesOn =
                    SSL_key_update(tls.get(), SSL_KEY_UPDATE_NOT_REQUESTED) == 1 && SSL_do_handshake(tls.get()) == 1;
            }
            close(socket);
        }
    }

    const std::unique_ptr<SSL_CTX, Release<SSL_CTX_free>> m_context;
    std::thread m_thread;
};

class Endless : public Examined
{
protected:
    std::vector<std::string> arguments(const std::string& target)
    {
        writeFile(local("ca.pem"), request.caCert);
        return {target, "--user", config.user, "--ca", local("ca.pem"), "--json", "--timeout", "1"};
    }

    static nlohmann::json reportOf(const DoctorProcess& process) { return nlohmann::json::parse(process.out()); }
};

TEST_F(Endless, HandshakesAreCutOff)
{
    // What the client does not read must not stop the server: writing to a client that has gone is no end of the test.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    const KeyUpdates changing(authority.issue());
    DoctorProcess process(arguments("ftps://localhost:" + std::to_string(changing.port.number()) + "/"),
                          config.password);
    // libcurl's own limit comes into play where OpenSSL has read all that is there, else doctor's.
    EXPECT_LT(0, process.wait());
    const nlohmann::json report = reportOf(process);
    for (const auto& each : report["operations"]) {
        EXPECT_NE("works", each["outlook"]);
        EXPECT_NE("works", each["session"]["outlook"]);
    }
}

// As it is where a server keeps OpenSSL busy: nothing but a signal ends that process.
TEST_F(Endless, AProbeThatDoesNotEndIsEnded)
{
    const LoopbackPort silent;
    silent.listen();
    DoctorProcess process(arguments("ftp://" + silent.address() + "/"), config.password);
    const int connection = silent.accept();
    kill(process.child(), SIGSTOP);
    EXPECT_EQ(1, process.wait());
    close(connection);
    const nlohmann::json report = reportOf(process);
    EXPECT_EQ("not seen", report["findings"][1]["seen"]);
    EXPECT_EQ("not offered: the handshake did not end within 4 seconds", report["findings"][3]["seen"]);
    EXPECT_EQ("the server falls silent when TLS is to begin", report["operations"][5]["reason"]);
}

class Interrupted : public Endless, public testing::WithParamInterface<int>
{
};

TEST_P(Interrupted, PrintsWhatIsKnown)
{
    const LoopbackPort silent;
    silent.listen();
    DoctorProcess process({"ftp://" + silent.address() + "/", "--user", "me", "--ca", "none", "--json"}, "secret");
    const int connection = silent.accept();
    process.signal(GetParam());
    EXPECT_EQ(-GetParam(), process.wait());
    close(connection);
    const nlohmann::json report = reportOf(process);
    EXPECT_EQ(3, report["status"]);
    EXPECT_EQ("the probe that logs in was interrupted", report["operations"][0]["reason"]);
    EXPECT_EQ("Run doctor again.", report["operations"][0]["remedy"]);
    EXPECT_EQ("Run doctor again.", report["operations"][0]["session"]["remedy"]);
    EXPECT_EQ("", process.err());
}

INSTANTIATE_TEST_SUITE_P(BySignal, Interrupted, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace
