#include "CurlClient.h"

using testserver::TlsMode;

CurlClient::CurlClient(const testserver::ServerConfig& config, std::uint16_t port, const std::string& caPem)
    : m_handle(curl_easy_init()),
      m_base((config.tls == TlsMode::Implicit ? "ftps://127.0.0.1:" : "ftp://127.0.0.1:") + std::to_string(port) + "/")
{
    CURL* const curl = handle();
    curl_easy_setopt(curl, CURLOPT_USERNAME, config.user.c_str());
    curl_easy_setopt(curl, CURLOPT_PASSWORD, config.password.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_USE_SSL,
                     static_cast<long>(config.tls == TlsMode::Plain ? CURLUSESSL_NONE : CURLUSESSL_ALL));
    curl_blob authority = {const_cast<char*>(caPem.data()), caPem.size(), CURL_BLOB_COPY};
    curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &authority);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &CurlClient::take);
    curl_easy_setopt(curl, CURLOPT_READFUNCTION, &CurlClient::give);
    curl_easy_setopt(curl, CURLOPT_FTP_CREATE_MISSING_DIRS, static_cast<long>(CURLFTP_CREATE_DIR));
}

std::size_t CurlClient::take(char* bytes, std::size_t one, std::size_t count, void* client)
{
    static_cast<CurlClient*>(client)->body.append(bytes, one * count);
    return one * count;
}

std::size_t CurlClient::give(char* bytes, std::size_t one, std::size_t count, void* client)
{
    std::string& unsent = static_cast<CurlClient*>(client)->m_unsent;
    const std::size_t given = unsent.copy(bytes, one * count);
    unsent.erase(0, given);
    return given;
}

CURLcode CurlClient::download(const std::string& path)
{
    body.clear();
    curl_easy_setopt(handle(), CURLOPT_WRITEDATA, this);
    curl_easy_setopt(handle(), CURLOPT_READDATA, this);
    curl_easy_setopt(handle(), CURLOPT_URL, (m_base + path).c_str());
    return curl_easy_perform(handle());
}

CURLcode CurlClient::upload(const std::string& path, std::string content)
{
    curl_easy_setopt(handle(), CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle(), CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(content.size()));
    m_unsent = std::move(content);
    return download(path);
}
