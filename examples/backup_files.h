// What both examples of a backup need: the files of a folder, their URLs, and the removal of what a cancelled upload
// leaves on the server.
#ifndef BACKUP_FILES_H
#define BACKUP_FILES_H

#include <SFtpSession.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

struct FilesBelow
{
    std::vector<std::filesystem::path> files; ///< relative to the folder
    std::vector<std::string> unread;          ///< what is there and cannot be read, and why
};

/// The regular files below `folder`. Links are not followed.
inline FilesBelow filesBelow(const std::filesystem::path& folder)
{
    FilesBelow found;
    std::vector<std::filesystem::path> directories = {folder};
    while (!directories.empty()) {
        const std::filesystem::path directory = directories.back();
        directories.pop_back();
        std::error_code error;
        for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
             entry.increment(error)) {
            std::error_code why;
            const std::filesystem::file_status status = entry->symlink_status(why);
            if (std::filesystem::is_directory(status)) {
                directories.push_back(entry->path());
            } else if (std::filesystem::is_regular_file(status)) {
                found.files.push_back(entry->path().lexically_relative(folder));
            } else if (!std::filesystem::status_known(status)) {
                found.unread.push_back(entry->path().string() + ": " + why.message());
            }
        }
        if (error) {
            found.unread.push_back(directory.string() + ": " + error.message());
        }
    }
    std::sort(found.files.begin(), found.files.end());
    return found;
}

/// The text of a file that must not be empty: without a CA, a session would trust the system's.
inline std::string contentOf(const std::string& path)
try {
    std::ifstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    if (text.empty()) {
        throw std::runtime_error(path + " is empty.");
    }
    return text;
} catch (const std::ios::failure&) { // a folder, for example, can be opened
    throw std::runtime_error(path + " cannot be read.");
}

inline std::string percentEncoded(const std::string& path)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    const std::string plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string encoded;
    for (const char letter : path) {
        const auto byte = static_cast<unsigned char>(letter);
        encoded += plain.find(letter) != std::string::npos ? std::string(1, letter)
                                                           : std::string{'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
    return encoded;
}

/// Whether an upload of `file` may have made `name`: ".FILE.XXXXXXXXXXXX.part", with hexadecimal digits; FILE is cut
/// where that has more than 255 bytes, and not amid a UTF-8 character.
inline bool isTemporaryNameOf(const std::string& file, const std::string& name)
{
    constexpr std::size_t kDigits = 12;
    const std::string end = ".part";
    if (name.size() < 2 + kDigits + end.size()) {
        return false;
    }
    const std::string kept = name.substr(1, name.size() - 2 - kDigits - end.size());
    const std::string digits = name.substr(2 + kept.size(), kDigits);
    constexpr std::size_t kLongest = 255;
    constexpr std::size_t kLongestCharacter = 4;
    const bool isCut = name.size() > kLongest - kLongestCharacter && file.rfind(kept, 0) == 0;
    return (kept == file || isCut) && digits.find_first_not_of("0123456789ABCDEF") == std::string::npos &&
           name == "." + kept + "." + digits + end;
}

/// Deletes the temporary files of cancelled uploads of `file`, below the directory of `server`: the connection on which
/// a call was cancelled is gone, and so the session could not do it. `directory` becomes the URL it looked at. The
/// result is that of the first call that fails, or 0.
inline int removeTemporaryFiles(SFtpSession& session, const SFtpRequest& server, const std::filesystem::path& file,
                                std::string& directory, std::string& errorText)
{
    SFtpRequest request = server;
    request.remotePath += percentEncoded((file.parent_path() / "").generic_string());
    directory = request.remotePath;
    std::vector<RemoteEntry> entries;
    int result = session.ListEntries(request, entries, errorText);
    for (const RemoteEntry& entry : entries) {
        if (result == 0 && isTemporaryNameOf(file.filename().string(), entry.name)) {
            request.remoteFileName = entry.name;
            result = session.DelSFtpFile(request, errorText);
        }
    }
    return result;
}

#endif
