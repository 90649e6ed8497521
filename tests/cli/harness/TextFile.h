#ifndef SFTPCLIENT_TESTS_CLI_TEXTFILE_H
#define SFTPCLIENT_TESTS_CLI_TEXTFILE_H

#include <output/Listing.h>

#include <string>

/// A temporary file that holds `text`.
class TextFile
{
public:
    explicit TextFile(const std::string& text);

    const std::string& path() const { return m_file.path(); }

    /// Writes `text` to the file, or pipe, `path`.
    static void writeTo(const std::string& path, const std::string& text);

private:
    TemporaryFile m_file;
};

/// What a file holds.
std::string contentsOf(const std::string& path);

#endif
