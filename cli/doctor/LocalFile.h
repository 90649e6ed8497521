#ifndef SFTPCLIENT_CLI_DOCTOR_LOCALFILE_H
#define SFTPCLIENT_CLI_DOCTOR_LOCALFILE_H

#include "base/Descriptor.h"

#include <string>

namespace doctor {

/// An empty file in memory: however the process ends, nothing of it is left on a disk. Throws `std::system_error` when
/// there can be none.
class LocalFile
{
public:
    LocalFile();

    /// For this process, and for one that it forks, as long as this object lives.
    const std::string& path() const { return m_path; }

    /// Throws `std::runtime_error` when there is no room.
    void write(const std::string& content) const;
    std::string content() const;

private:
    Descriptor m_file;
    std::string m_path;
};

} // namespace doctor

#endif
