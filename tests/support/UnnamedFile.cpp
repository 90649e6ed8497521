#include "support/UnnamedFile.h"

#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

UnnamedFile::UnnamedFile() : m_file(std::tmpfile())
{
    if (!m_file) {
        throw std::runtime_error("no temporary file can be made");
    }
}

std::string UnnamedFile::content() const
{
    std::string content;
    std::array<char, 4096> block = {};
    for (;;) {
        const ssize_t got = pread(descriptor(), block.data(), block.size(), static_cast<off_t>(content.size()));
        if (got <= 0) {
            return content;
        }
        content.append(block.data(), static_cast<std::size_t>(got));
    }
}
