#include <gtest/gtest.h>

#include <link.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace {

using Strings = std::multimap<std::string, std::string>;

// The load address of this program, the first image that the loader lists.
std::uintptr_t loadBias()
{
    std::uintptr_t bias = 0;
    dl_iterate_phdr(
        [](dl_phdr_info* image, std::size_t, void* result) {
            *static_cast<std::uintptr_t*>(result) = image->dlpi_addr;
            return 1;
        },
        &bias);
    return bias;
}

// The std::string objects of this name, with internal linkage and in no namespace, in this program: source file to
// content. In the order of the symbol table, the local symbols of a file follow the one that names it.
Strings localStrings(const std::string& name)
{
    const std::string command = SFTPCLIENT_NM " -pa " + std::filesystem::read_symlink("/proc/self/exe").string();
    const std::unique_ptr<FILE, int (*)(FILE*)> symbols(popen(command.c_str(), "r"), pclose);
    const std::string symbol = "_ZL" + std::to_string(name.size()) + name;
    Strings strings;
    std::string file;
    unsigned long value = 0;
    char type = ' ';
    char text[1000];
    for (char line[2000]; fgets(line, sizeof line, symbols.get()) != nullptr;) {
        if (sscanf(line, "%lx %c %999s", &value, &type, text) != 3) {
            continue;
        }
        if (type == 'a') {
            file = text;
        } else if (text == symbol || text == symbol + "B5cxx11") { // clang adds the library's ABI tag
            strings.emplace(file, *reinterpret_cast<const std::string*>(loadBias() + value));
        }
    }
    return strings;
}

// This program's own sources that write records.
Strings withoutTests(Strings strings)
{
    strings.erase("LogStatementTest.cpp");
    return strings;
}

TEST(ModuleConstants, EverySourceThatLogsHasItsOwnModuleName)
{
    const Strings expected{{"CurlSFtpClient.cpp", "SFtpClient"}, {"CurlSFtpResponse.cpp", "SFtpClient"},
                           {"Delete.cpp", "SFtpClient"},         {"Download.cpp", "SFtpClient"},
                           {"SizeCheck.cpp", "SFtpClient"},      {"ISFtpClient.cpp", "SFtpClient"},
                           {"Listing.cpp", "SFtpClient"},        {"Rename.cpp", "SFtpClient"},
                           {"ReplyCapture.cpp", "SFtpClient"},   {"SFtpClient.cpp", "SFtpClient"},
                           {"SftpConvToX509.cpp", "SFtpClient"}, {"SftpSetCertTmp.cpp", "SFtpClient"},
                           {"SslCtxFunction.cpp", "SFtpClient"}, {"TestSConnect.cpp", "SFtpClient"},
                           {"Upload.cpp", "SFtpClient"}};
    EXPECT_EQ(expected, withoutTests(localStrings("kModuleName")));
}

// Nothing uses it. As C++20, it is a constant that a compiler may leave out.
TEST(ModuleConstants, TheFacadeAndTheClientHaveTheLogName)
{
    const Strings names = localStrings("kLogName");
    const bool isLeftOut = __cplusplus > 201703L && names.empty();
    const Strings expected{{"CurlSFtpClient.cpp", "LOG"}, {"SFtpClient.cpp", "LOG"}};
    EXPECT_EQ(isLeftOut ? Strings{} : expected, names);
}

} // namespace
