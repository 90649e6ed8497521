#include "ScriptedWalk.h"

#include "tls/TlsTrust.h"

#include <map>

namespace {

using memory::Shortage;

// The certificate hook as libcurl, which is written in C, calls it: no exception may leave it.
class ScriptedHook : public ScriptedWalk
{
protected:
    static int hook(const SFtpRequest& request)
    {
        const Context context = makeContext();
        std::string certificate = copyOf(request.caCert);
        const int answer = sftp_sslCtx_function(nullptr, context.get(), &certificate);
        const memory::Pause pause;
        const X509_STORE* store = SSL_CTX_get_cert_store(context.get());
        EXPECT_EQ(answer == CURLE_OK ? 1 : 0, sk_X509_OBJECT_num(X509_STORE_get0_objects(store)));
        return answer;
    }

private:
    static std::string copyOf(const std::string& text)
    {
        const memory::Pause pause;
        return text;
    }
};

TEST_F(ScriptedHook, OneFailedAllocationReturnsACode)
{
    const std::map<std::string, int> answers = {{"operator new", CURLE_FAILED_INIT},
                                                {"BIO_new_mem_buf", CURLE_SSL_CACERT_BADFILE},
                                                {"PEM_read_bio_X509", CURLE_SSL_CACERT_BADFILE},
                                                {"X509_STORE_add_cert", CURLE_FAILED_INIT}};
    walk(hook, CURLE_OK, Shortage::Once, [&](const Outcome& outcome) {
        EXPECT_EQ(nameOf(answers.at(outcome.who)), nameOf(outcome.result));
        // The exception handler has no memory to log what it catches.
        if (outcome.who != std::string("operator new")) {
            expectTold(outcome);
        }
    });
}

TEST_F(ScriptedHook, ExhaustedMemoryReturnsAFailure)
{
    walk(hook, CURLE_OK, Shortage::ForGood,
         [](const Outcome& outcome) { EXPECT_EQ(nameOf(CURLE_FAILED_INIT), nameOf(outcome.result)); });
}

TEST_F(ScriptedHook, InvalidTextIsRefusedWhateverAllocationFails)
{
    request.caCert = "a text that is too long for a string without a block of its own";
    for (const Shortage shortage : {Shortage::Once, Shortage::ForGood}) {
        walk(hook, CURLE_SSL_CACERT_BADFILE, shortage, [](const Outcome& outcome) {
            EXPECT_TRUE(outcome.result == CURLE_FAILED_INIT || outcome.result == CURLE_SSL_CACERT_BADFILE)
                << nameOf(outcome.result);
        });
    }
}

} // namespace
