#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

TemporaryFolder::TemporaryFolder() : m_path(testing::TempDir() + "sftpclient-XXXXXX")
{
    if (mkdtemp(m_path.data()) == nullptr) {
        throw std::runtime_error("no folder can be made in " + testing::TempDir());
    }
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const
{
    writeFile(file(name), content);
    using std::filesystem::perms;
    std::filesystem::permissions(file(name), perms::owner_read | perms::owner_write);
    return file(name);
}

void writeFile(const std::string& path, const std::string& content)
{
    std::ofstream stream(path, std::ios::binary);
    if (!(stream << content).flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

std::string contentOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return kNoFile;
    }
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}
