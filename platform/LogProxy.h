#ifndef SFTPCLIENT_PLATFORM_LOGPROXY_H
#define SFTPCLIENT_PLATFORM_LOGPROXY_H

#include <sstream>
#include <string>

/// One log record, supplied by the host: constructed, written into as a stream, and handed to the host's log when it
/// is destroyed. The library makes one for every record and calls nothing else on it.
///
/// Records come from every thread that uses the library, and one record may be written while another of the same
/// thread is still open. The constructor may throw (from within a TLS handshake only what derives from
/// `std::exception`: docs/host-services.md); the destructor must not.
///
/// The library places these objects on its own stack: a host that lays the class out differently builds the library
/// against its own header (SFTPCLIENT_PLATFORM_INCLUDE_DIR).
class LogProxy : public std::ostringstream
{
public:
    /// level: 1 detail, 2 normal end of an operation (also, in rename and delete, a "/dev/null" that cannot be opened),
    /// 4 failure. module: "SFtpClient". requestId: the thread's
    /// request identifier, or 0. function and line: where the record was written.
    /// The strings live as long as the record.
    LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
             unsigned int line);

    /// Completes the record. Its text, `str()`, begins with a 0 that every record carries.
    ~LogProxy() override;

    LogProxy(const LogProxy&) = delete;
    LogProxy& operator=(const LogProxy&) = delete;

private:
    // For the host's use, as far as it wants them.
    [[maybe_unused]] int m_level = 0;
    [[maybe_unused]] std::string m_module;
    [[maybe_unused]] unsigned long m_requestId = 0;
    [[maybe_unused]] std::string m_function;
    [[maybe_unused]] unsigned int m_line = 0;
};

/// The host's request identifiers, one a thread. The library reads it for each record, on the thread that calls it (a
/// response that was handed to another thread included); the host sets it.
class ThreadRequestId
{
public:
    /// The calling thread's identifier. The reference is valid on that thread as long as it runs.
    unsigned long& get();
};

/// The one object, defined by the host. It must be there before the first record and until after the last.
extern ThreadRequestId TSP_RequestID;

#endif
