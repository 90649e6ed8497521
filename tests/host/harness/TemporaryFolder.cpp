#include "harness/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

TemporaryFolder::TemporaryFolder() : m_path(testing::TempDir() + "host-XXXXXX")
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
    std::ofstream stream(file(name), std::ios::binary);
    if (!(stream << content).flush()) {
        throw std::runtime_error("cannot write " + file(name));
    }
    return file(name);
}

std::string contentOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}
