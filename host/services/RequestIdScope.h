#ifndef SFTPCLIENT_HOST_REQUESTIDSCOPE_H
#define SFTPCLIENT_HOST_REQUESTIDSCOPE_H

#include <LogProxy.h>

#include <utility>

/// Gives the calling thread's records a request identifier as long as this object lives, and afterwards the one from
/// before. Scopes nest.
///
/// REQUIRES: it ends on the thread on which it began, after the scopes within it.
class RequestIdScope
{
public:
    /// Makes `identifier` the calling thread's.
    explicit RequestIdScope(unsigned long identifier) : m_before(std::exchange(TSP_RequestID.get(), identifier)) {}
    ~RequestIdScope() { TSP_RequestID.get() = m_before; }
    RequestIdScope(const RequestIdScope&) = delete;
    RequestIdScope& operator=(const RequestIdScope&) = delete;

private:
    unsigned long m_before;
};

#endif
