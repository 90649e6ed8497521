#include "harness/LiveWalk.h"

#include "tls/TlsTrust.h"

#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <memory>

namespace {

using heap::Shortage;
using heap::Whose;

template <typename Type, void (*Release)(Type*)>
struct Releaser
{
    void operator()(Type* object) const { Release(object); }
};
using Context = std::unique_ptr<SSL_CTX, Releaser<SSL_CTX, SSL_CTX_free>>;
using Certificate = std::unique_ptr<X509, Releaser<X509, X509_free>>;

// The certificate hook with a real OpenSSL, each of whose allocations fails in turn.
class LiveHook : public LiveWalk
{
protected:
    LiveHook()
    {
        const std::unique_ptr<BIO, Releaser<BIO, BIO_free_all>> pem(
            BIO_new_mem_buf(request.caCert.data(), static_cast<int>(request.caCert.size())));
        m_expected.reset(PEM_read_bio_X509(pem.get(), nullptr, nullptr, nullptr));
    }

    Piece hook()
    {
        return {[this] { m_context.reset(SSL_CTX_new(TLS_client_method())); },
                [this] {
                    const int answer = sftp_sslCtx_function(nullptr, m_context.get(), &request.caCert);
                    const heap::Pause pause;
                    m_trusted = trusted();
                    m_context.reset();
                    return answer;
                },
                [this] { return m_trusted; }};
    }

    bool hasTrusted() const { return m_trusted; }

private:
    bool trusted() const
    {
        const auto* const objects = X509_STORE_get0_objects(SSL_CTX_get_cert_store(m_context.get()));
        return sk_X509_OBJECT_num(objects) == 1 &&
               X509_cmp(m_expected.get(), X509_OBJECT_get0_X509(sk_X509_OBJECT_value(objects, 0))) == 0;
    }

    Certificate m_expected;
    Context m_context;
    bool m_trusted = false;
};

// OpenSSL does without some of its allocations: it reads the certificate's key when it is first needed, if not now.
TEST_F(LiveHook, OneFailedAllocationIsAFailureUnlessTheCertificateIsTrusted)
{
    walk(hook(), Whose::Everyone, Shortage::Once, [this](const Outcome& outcome) {
        if (outcome.result == CURLE_SSL_CACERT_BADFILE) {
            ASSERT_FALSE(outcome.records.empty());
            EXPECT_EQ("4 sftp_sslCtx_function(): 0sslCtx_function, convToX509 failed.", outcome.records.back());
        } else {
            EXPECT_TRUE(outcome.result == CURLE_OK || outcome.result == CURLE_FAILED_INIT) << outcome.result;
        }
        EXPECT_EQ(outcome.result == CURLE_OK, hasTrusted());
    });
}

TEST_F(LiveHook, NoMemoryAnyMoreIsAFailure)
{
    walk(hook(), Whose::Everyone, Shortage::ForGood, [this](const Outcome& outcome) {
        EXPECT_EQ(CURLE_FAILED_INIT, outcome.result);
        EXPECT_FALSE(hasTrusted());
    });
}

} // namespace
