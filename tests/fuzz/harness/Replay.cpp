// Runs a target once with each file that is named, and with each file of a folder that is named.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<std::string> inputsIn(const std::string& path)
{
    if (!std::filesystem::is_directory(path)) {
        return {path};
    }
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw std::runtime_error(file + " cannot be read: name a file, or a folder of files.");
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv)
try {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::string& file : inputsIn(argv[i])) {
            std::cerr << file << std::endl; // before it is run: the last one named is the one that failed
            replay(file);
            ++count;
        }
    }
    if (count == 0) {
        throw std::runtime_error("Nothing to replay: name files, or folders of files.");
    }
    std::cerr << count << " inputs replayed\n";
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
}
