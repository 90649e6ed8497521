#include "LiveWalk.h"

#include "support/Certificates.h"
#include "tls/TlsTrust.h"

namespace {

using memory::Shortage;
using memory::Whose;

// The certificate hook with a real OpenSSL, each of whose allocations fails in turn.
class LiveHook : public LiveWalk
{
protected:
    LiveHook() { request.caCert = certificates::pemOf(m_expected.get()); }

    Piece hook()
    {
        return {[this] { m_context.reset(SSL_CTX_new(TLS_client_method())); },
                [this] {
                    const int answer = sftp_sslCtx_function(nullptr, m_context.get(), &request.caCert);
                    const memory::Pause pause;
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

    const certificates::Certificate m_expected = certificates::make(1);
    certificates::Context m_context;
    bool m_trusted = false;
};

// OpenSSL tolerates some failures: if it cannot read the certificate's key now, it does so at first use.
TEST_F(LiveHook, OneFailedAllocationIsAFailureUnlessTheCertificateIsTrusted)
{
    walk(hook(), Whose::Everyone, Shortage::Once, [this](const Outcome& outcome) {
        if (outcome.result == CURLE_SSL_CACERT_BADFILE) {
            ASSERT_FALSE(outcome.records.empty());
            EXPECT_EQ("4 SFtpClient 77 sftp_sslCtx_function(): 0|sslCtx_function, convToX509 failed.|",
                      outcome.records.back());
        } else {
            EXPECT_TRUE(outcome.result == CURLE_OK || outcome.result == CURLE_FAILED_INIT) << nameOf(outcome.result);
        }
        EXPECT_EQ(outcome.result == CURLE_OK, hasTrusted());
    });
}

TEST_F(LiveHook, ExhaustedMemoryIsAFailure)
{
    walk(hook(), Whose::Everyone, Shortage::ForGood, [this](const Outcome& outcome) {
        EXPECT_EQ(nameOf(CURLE_FAILED_INIT), nameOf(outcome.result));
        EXPECT_FALSE(hasTrusted());
    });
}

} // namespace
