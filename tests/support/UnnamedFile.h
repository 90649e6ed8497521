#ifndef SUPPORT_UNNAMEDFILE_H
#define SUPPORT_UNNAMEDFILE_H

#include <cstdio>
#include <memory>
#include <string>

/// A file without a name, open as long as this object lives.
class UnnamedFile
{
public:
    UnnamedFile();

    int descriptor() const { return fileno(m_file.get()); }

    /// What has been written so far, by any process.
    std::string content() const;

private:
    struct Close
    {
        void operator()(FILE* file) const { static_cast<void>(fclose(file)); }
    };

    std::unique_ptr<FILE, Close> m_file;
};

#endif
