#ifndef SFTPCLIENT_HOST_CURLPROCESS_H
#define SFTPCLIENT_HOST_CURLPROCESS_H

/// libcurl, ready for use by the whole process as long as an object of this class lives.
///
/// Make one at the start of `main`. Parts of a host that do not know of each other may each make their own: libcurl
/// counts, initialises itself for the first and cleans up after the last. A host that calls `curl_global_init` and
/// `curl_global_cleanup` itself, one for one, is counted in.
class CurlProcess
{
public:
    /// Throws `std::runtime_error` when libcurl cannot be initialised; nothing is then left to clean up.
    CurlProcess();

    /// REQUIRES: for the last one, that no thread uses libcurl any more.
    ~CurlProcess();

    CurlProcess(const CurlProcess&) = delete;
    CurlProcess& operator=(const CurlProcess&) = delete;
};

#endif
