#ifndef SERVERTEST_HARNESS_FOLDER_H
#define SERVERTEST_HARNESS_FOLDER_H

#include <filesystem>
#include <string>

/// A temporary folder that goes with the object.
class Folder
{
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

void writeFile(const std::filesystem::path& path, const std::string& content);
std::string contentOf(const std::filesystem::path& path);

#endif
