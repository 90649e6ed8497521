// The folders of the command are floors: each includes its own and lower ones alone.
#include "support/Lines.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace {

const std::map<std::string, int> kFloors{{"base", 0},      {"credentials", 1}, {"output", 1}, {"usage", 1},
                                         {"operation", 2}, {"doctor", 3},      {"tree", 3},   {"", 4}};

// "base" of `#include "base/Checks.h"`; empty for any other line.
std::string includedFolder(const std::string& line)
{
    const std::string beginning = "#include \"";
    const std::string::size_type slash = line.find('/');
    return line.rfind(beginning, 0) != 0 || slash == std::string::npos
               ? std::string()
               : line.substr(beginning.size(), slash - beginning.size());
}

} // namespace

TEST(Floors, OnlyLookDown)
{
    const std::filesystem::path top = SFTPCLIENT_SOURCE "/cli";
    std::size_t includes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
        const std::string extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") {
            continue;
        }
        const std::filesystem::path file = std::filesystem::relative(entry.path(), top);
        const std::string own = file.has_parent_path() ? *file.begin() : std::filesystem::path();
        ASSERT_EQ(1U, kFloors.count(own)) << "the floor of a new folder is missing here: " << own;
        for (const std::string& line : linesOf(contentOf(entry.path()))) {
            const std::string folder = includedFolder(line);
            if (!folder.empty() && folder != own) {
                ASSERT_EQ(1U, kFloors.count(folder)) << file << ": " << line;
                EXPECT_LT(kFloors.at(folder), kFloors.at(own)) << file << ": " << line;
                ++includes;
            }
        }
    }
    EXPECT_GT(includes, 50U);
}
