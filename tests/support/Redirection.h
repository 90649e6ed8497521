#ifndef SUPPORT_REDIRECTION_H
#define SUPPORT_REDIRECTION_H

#include <cstdio>
#include <memory>
#include <string>

/// Sends what the process writes to a descriptor into a file of its own, as long as it lives.
class Redirection
{
public:
    explicit Redirection(FILE* stream);
    ~Redirection();
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

    /// What has been written so far.
    std::string content() const;

private:
    struct Close
    {
        void operator()(FILE* file) const { static_cast<void>(fclose(file)); }
    };

    FILE* m_stream;
    int m_original;
    std::unique_ptr<FILE, Close> m_file;
};

#endif
