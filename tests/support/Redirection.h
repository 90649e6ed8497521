#ifndef SUPPORT_REDIRECTION_H
#define SUPPORT_REDIRECTION_H

#include "support/UnnamedFile.h"

#include <cstdio>
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
    FILE* m_stream;
    int m_original;
    UnnamedFile m_file;
};

#endif
