// What a plain program on libcurl writes for a session's transfers: TLS before the login, the request's CA alone, TLS
// 1.2, host names compared; and nothing around them.

#include "Operations.h"

#include <curl/curl.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace {

struct CleanUp
{
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, CleanUp>;

class File
{
public:
    File(const std::string& path, int flags) : m_descriptor(open(path.c_str(), flags | O_CLOEXEC)) {}
    ~File()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int* descriptor() { return &m_descriptor; }
    curl_off_t size() const
    {
        struct stat status = {};
        return fstat(m_descriptor, &status) == 0 ? status.st_size : -1;
    }

private:
    int m_descriptor;
};

template <typename Value>
void set(const Handle& handle, CURLoption option, Value value)
{
    curl_easy_setopt(handle.get(), option, value);
}

size_t writeToFile(void* bytes, size_t /*one*/, size_t count, void* descriptor)
{
    const ssize_t written = write(*static_cast<int*>(descriptor), bytes, count);
    return written < 0 ? 0 : static_cast<size_t>(written);
}

size_t readFromFile(char* bytes, size_t /*one*/, size_t count, void* descriptor)
{
    const ssize_t got = read(*static_cast<int*>(descriptor), bytes, count);
    return got < 0 ? CURL_READFUNC_ABORT : static_cast<size_t>(got);
}

void aim(const Handle& handle, const SFtpRequest& request)
{
    set(handle, CURLOPT_URL, request.remotePath.c_str());
    set(handle, CURLOPT_USERNAME, request.userName.c_str());
    set(handle, CURLOPT_PASSWORD, request.password.c_str());
    set(handle, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_SINGLECWD));
    set(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    set(handle, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_TLS));
    set(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2 | CURL_SSLVERSION_MAX_TLSv1_2));
    curl_blob ca = {const_cast<char*>(request.caCert.data()), request.caCert.size(), CURL_BLOB_NOCOPY};
    set(handle, CURLOPT_CAINFO_BLOB, &ca);
    set(handle, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    set(handle, CURLOPT_NOSIGNAL, 1L);
}

int download(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    File file(request.localPath, O_WRONLY);
    aim(handle, request);
    set(handle, CURLOPT_WRITEFUNCTION, writeToFile);
    set(handle, CURLOPT_WRITEDATA, file.descriptor());
    return curl_easy_perform(handle.get());
}

int upload(const SFtpRequest& request)
{
    const Handle handle(curl_easy_init());
    File file(request.localPath, O_RDONLY);
    aim(handle, request);
    set(handle, CURLOPT_UPLOAD, 1L);
    set(handle, CURLOPT_READFUNCTION, readFromFile);
    set(handle, CURLOPT_READDATA, file.descriptor());
    set(handle, CURLOPT_INFILESIZE_LARGE, file.size());
    return curl_easy_perform(handle.get());
}

} // namespace

const std::map<std::string, Operation>& operations()
{
    static const std::map<std::string, Operation> kOperations = {{"download", download}, {"upload", upload}};
    return kOperations;
}
