#ifndef SFTPCLIENT_PLATFORM_LOGPROXY_H
#define SFTPCLIENT_PLATFORM_LOGPROXY_H

#include <sstream>
#include <string>

/// One log record, supplied by the host: constructed, written to as a stream, and passed to the host's log when it is
/// destroyed. The library creates one for every record and calls nothing else on it.
///
/// Records come from every thread that uses the library, and a thread may write one record while another of its records
/// is open. The constructor may throw (during a TLS handshake only exceptions derived from `std::exception`:
/// docs/host-services.md); the destructor must not.
///
/// The library creates these objects on its own stack: a host whose class has another layout builds the library against
/// its own header (SFTPCLIENT_PLATFORM_INCLUDE_DIR).
class LogProxy : public std::ostringstream
{
public:
    /// level: 1 detail, 2 normal end of an operation (also, in rename and delete, a "/dev/null" that cannot be opened),
    /// 4 failure. module: "SFtpClient", or "SFtpSession". requestId: the thread's request identifier, or 0. function
    /// and line: where the record was written. The strings live as long as the record.
    LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
             unsigned int line);

    /// Completes the record. Its text, `str()`, begins with a 0 that every record carries.
    ~LogProxy() override;

    LogProxy(const LogProxy&) = delete;
    LogProxy& operator=(const LogProxy&) = delete;

private:
    // For the host's use, if it needs them.
    [[maybe_unused]] int m_level = 0;
    [[maybe_unused]] std::string m_module;
    [[maybe_unused]] unsigned long m_requestId = 0;
    [[maybe_unused]] std::string m_function;
    [[maybe_unused]] unsigned int m_line = 0;
};

/// The host's request identifiers, one for each thread. The host sets them; the library reads the calling thread's for
/// each record, also if a response was passed to another thread.
class ThreadRequestId
{
public:
    /// The calling thread's identifier. The reference is valid on that thread for as long as it runs.
    unsigned long& get();
};

/// The only object, defined by the host. It must exist before the first record and until after the last.
extern ThreadRequestId TSP_RequestID;

#endif
