#include "doctor/LocalFile.h"

#include "base/ThrowErrno.h"

#include <sys/mman.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace doctor {

LocalFile::LocalFile()
    : m_file(memfd_create("sftpclient-doctor", MFD_CLOEXEC)), m_path("/proc/self/fd/" + std::to_string(m_file.get()))
{
    if (!m_file.isOpen()) {
        throwErrno("no file can be made in memory");
    }
}

void LocalFile::write(const std::string& content) const
{
    std::ofstream stream(m_path, std::ios::binary);
    if (!(stream << content).flush()) {
        throw std::runtime_error("a file in memory cannot be written");
    }
}

std::string LocalFile::content() const
{
    std::ifstream stream(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace doctor
