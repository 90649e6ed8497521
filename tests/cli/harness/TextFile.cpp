#include "harness/TextFile.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

TextFile::TextFile(const std::string& text)
{
    std::ofstream stream(path(), std::ios::binary);
    stream << text;
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + path());
    }
}

std::string contentsOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void TextFile::writeTo(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}
