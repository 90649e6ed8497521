#ifndef SUPPORT_TEMPORARYFOLDER_H
#define SUPPORT_TEMPORARYFOLDER_H

#include <string>

/// A folder that is removed with the object.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return m_path; }

    /// The path of `name` in the folder.
    std::string file(const std::string& name) const { return m_path + "/" + name; }

    /// Writes a file there, readable only by its owner, and returns its path.
    std::string write(const std::string& name, const std::string& content) const;

private:
    std::string m_path;
};

/// A file with this content, readable only by its owner, that is removed with the object.
class TextFile
{
public:
    explicit TextFile(const std::string& content = {}) : m_path(m_folder.write("file", content)) {}

    const std::string& path() const { return m_path; }

private:
    TemporaryFolder m_folder;
    std::string m_path;
};

/// Writes a file, in place of what was there.
void writeFile(const std::string& path, const std::string& content);

/// What a file holds; kNoFile if there is none.
std::string contentOf(const std::string& path);

constexpr const char* kNoFile = "no such file";

#endif
