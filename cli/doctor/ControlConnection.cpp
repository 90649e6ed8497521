#include "doctor/ControlConnection.h"

#include "doctor/Transcript.h"

#include <curl/curl.h>
#include <openssl/err.h>

#include <array>
#include <exception>
#include <memory>
#include <new>

namespace doctor {

namespace {

// A visit has as many waits as this, at most, before it is given up as a whole.
constexpr int kWaits = 3;

struct FreeList
{
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, FreeList>;
using Handle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

// With a "*" in front, libcurl goes on when the server refuses.
List listOf(const std::vector<std::string>& commands)
{
    List list;
    for (const std::string& command : commands) {
        curl_slist* const longer = curl_slist_append(list.get(), ("*" + command).c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

CURLcode addCertificate(CURL* /*handle*/, void* context, void* text) noexcept
try {
    const X509Certificate certificate = readCertificate(*static_cast<const std::string*>(text));
    X509_STORE* const store = SSL_CTX_get_cert_store(static_cast<SSL_CTX*>(context));
    if (!certificate) {
        return CURLE_SSL_CACERT_BADFILE;
    }
    return X509_STORE_add_cert(store, certificate.get()) == 1 ? CURLE_OK : CURLE_FAILED_INIT;
} catch (const std::exception&) {
    return CURLE_FAILED_INIT;
}

// What the library does for all operations but the upload and the size check.
void setTlsStep(CURL* handle, const Access& access)
{
    curl_easy_setopt(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    if (access.trust == Trust::Nobody) {
        curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
        return;
    }
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, addCertificate);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, &access.request.caCert);
}

size_t keep(const char* bytes, size_t size, size_t count, void* listing) noexcept
try {
    static_cast<NameList*>(listing)->append(bytes, size * count);
    return size * count;
} catch (const std::exception&) {
    return 0;
}

void setLimits(CURL* handle, std::chrono::milliseconds limit)
{
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limit.count()));
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(limit);
    curl_easy_setopt(handle, CURLOPT_FTP_RESPONSE_TIMEOUT, static_cast<long>(seconds.count()));
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(kWaits * limit.count()));
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
}

void learn(CURL* handle, const PasswordMask& mask, ProbeResult& visit)
{
    const char* entryPath = nullptr;
    curl_easy_getinfo(handle, CURLINFO_SSL_VERIFYRESULT, &visit.verifyResult);
    if (curl_easy_getinfo(handle, CURLINFO_FTP_ENTRY_PATH, &entryPath) == CURLE_OK && entryPath != nullptr) {
        visit.entryPath = ServerText(entryPath, mask);
    }
}

} // namespace

ProbeResult visit(const Access& access, const Errand& errand)
{
    // Made before the handle, because its farewell is still taken down.
    Transcript transcript(access.mask);
    NameList listing;
    std::array<char, CURL_ERROR_SIZE> error = {};
    const List afterLogin = listOf(errand.afterLogin);
    const List afterListing = listOf(errand.afterListing);
    const Handle handle(curl_easy_init(), curl_easy_cleanup);
    if (!handle) {
        throw std::bad_alloc();
    }
    curl_easy_setopt(handle.get(), CURLOPT_URL, errand.url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PORT, static_cast<long>(access.request.port));
    curl_easy_setopt(handle.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(handle.get(), CURLOPT_USERNAME, access.request.userName.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PASSWORD, access.request.password.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_DIRLISTONLY, errand.namesOnly ? 1L : 0L);
    curl_easy_setopt(handle.get(), CURLOPT_QUOTE, afterLogin.get());
    curl_easy_setopt(handle.get(), CURLOPT_POSTQUOTE, afterListing.get());
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, keep);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &listing);
    curl_easy_setopt(handle.get(), CURLOPT_ERRORBUFFER, error.data());
    setLimits(handle.get(), access.limit);
    if (errand.tlsStep) {
        setTlsStep(handle.get(), access);
    }
    transcript.listenTo(handle.get());

    ProbeResult visit;
    visit.made = true;
    visit.code = curl_easy_perform(handle.get());
    visit.error = ServerText(error[0] != '\0' ? error.data() : curl_easy_strerror(static_cast<CURLcode>(visit.code)),
                             access.mask);
    visit.names = listing;
    visit.transcript = transcript.exchanges();
    learn(handle.get(), access.mask, visit);
    return visit;
}

} // namespace doctor
