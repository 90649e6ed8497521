#include "doctor/LocalFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace doctor {

LocalFile::LocalFile() : m_path(std::filesystem::temp_directory_path() / "sftpclient-doctor-XXXXXX")
{
    const int made = mkstemp(m_path.data());
    if (made < 0) {
        throw std::system_error(errno, std::generic_category(), "No file can be made like " + m_path + " (TMPDIR)");
    }
    close(made);
}

LocalFile::~LocalFile() { unlink(m_path.c_str()); }

void LocalFile::write(const std::string& content) const
{
    std::ofstream stream(m_path, std::ios::binary);
    if (!(stream << content).flush()) {
        throw std::runtime_error("The file " + m_path + " cannot be written: make room for it.");
    }
}

std::string LocalFile::content() const
{
    std::ifstream stream(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace doctor
