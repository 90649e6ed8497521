#ifndef BUILD_OWNLOGPROXY_H
#define BUILD_OWNLOGPROXY_H

#include <ostream>
#include <streambuf>
#include <string>

/// A host's record with its own layout: another base class, other members, a constructor in the header, and an
/// explicit one.
class LogProxy : public std::ostream
{
public:
    explicit LogProxy(int level, const std::string& module, unsigned long requestId, const std::string& function,
                      unsigned int line)
        : std::ostream(nullptr)
    {
        rdbuf(beginOwnRecord(level, module.c_str(), requestId, function.c_str(), line));
    }
    ~LogProxy() override;
    LogProxy(const LogProxy&) = delete;
    LogProxy& operator=(const LogProxy&) = delete;

private:
    static std::streambuf* beginOwnRecord(int level, const char* module, unsigned long requestId, const char* function,
                                          unsigned int line);
    char m_room[512] = {};
};

class ThreadRequestId
{
public:
    unsigned long& get();
};

extern ThreadRequestId TSP_RequestID;

#endif
