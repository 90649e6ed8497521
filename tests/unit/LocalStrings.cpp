#include "LocalStrings.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

// Copies, because nothing in a file is aligned.
class Image
{
public:
    explicit Image(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    template <typename Type>
    Type at(std::size_t offset) const
    {
        Type value;
        std::memcpy(&value, &m_bytes.at(offset), sizeof value);
        return value;
    }

    std::string textAt(std::size_t offset) const { return std::string(&m_bytes.at(offset)); }

    Elf64_Shdr section(std::size_t index) const
    {
        return at<Elf64_Shdr>(at<Elf64_Ehdr>(0).e_shoff + index * sizeof(Elf64_Shdr));
    }

private:
    std::vector<char> m_bytes;
};

struct Symbol
{
    std::string file;
    std::string name;
    Elf64_Addr value;
};

std::vector<Symbol> objectsOf(const Image& image)
{
    std::vector<Symbol> objects;
    for (std::size_t i = 0; i < image.at<Elf64_Ehdr>(0).e_shnum; ++i) {
        const Elf64_Shdr table = image.section(i);
        if (table.sh_type != SHT_SYMTAB) {
            continue;
        }
        const std::size_t names = image.section(table.sh_link).sh_offset;
        std::string file;
        for (std::size_t offset = 0; offset < table.sh_size; offset += sizeof(Elf64_Sym)) {
            const auto symbol = image.at<Elf64_Sym>(table.sh_offset + offset);
            const std::string name = image.textAt(names + symbol.st_name);
            // The local symbols of a source file follow the symbol that names it.
            if (ELF64_ST_TYPE(symbol.st_info) == STT_FILE) {
                file = name;
            } else if (ELF64_ST_TYPE(symbol.st_info) == STT_OBJECT) {
                objects.push_back({file, name, symbol.st_value});
            }
        }
    }
    return objects;
}

// What the loader adds to the addresses of this program, the first image that it lists.
Elf64_Addr loadBias()
{
    Elf64_Addr bias = 0;
    dl_iterate_phdr(
        [](dl_phdr_info* image, std::size_t, void* result) {
            *static_cast<Elf64_Addr*>(result) = image->dlpi_addr;
            return 1;
        },
        &bias);
    return bias;
}

} // namespace

std::multimap<std::string, std::string> localStrings(const std::string& name)
{
    const std::string symbol = "_ZL" + std::to_string(name.size()) + name;
    std::multimap<std::string, std::string> strings;
    for (const Symbol& object : objectsOf(Image("/proc/self/exe"))) {
        // clang adds the library's ABI tag, g++ does not.
        if (object.name == symbol || object.name == symbol + "B5cxx11") {
            const Elf64_Addr address = loadBias() + object.value;
            const std::string* text = nullptr;
            std::memcpy(&text, &address, sizeof address);
            strings.emplace(object.file, *text);
        }
    }
    return strings;
}
