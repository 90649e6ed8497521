#ifndef SFTPCLIENT_CLI_DOCTOR_LOCALFILE_H
#define SFTPCLIENT_CLI_DOCTOR_LOCALFILE_H

#include <string>

namespace doctor {

/// An empty file of its own name that is deleted with this object. Throws `std::system_error` when there can be none.
class LocalFile
{
public:
    LocalFile();
    ~LocalFile();
    LocalFile(const LocalFile&) = delete;
    LocalFile& operator=(const LocalFile&) = delete;

    const std::string& path() const { return m_path; }

    /// Throws `std::runtime_error` when the disk takes no more.
    void write(const std::string& content) const;
    std::string content() const;

private:
    std::string m_path;
};

} // namespace doctor

#endif
