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
#include <vector>

/// The paths of the regular files below `folder`, relative to it. Links are not followed.
inline std::vector<std::filesystem::path> filesBelow(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (std::filesystem::is_regular_file(entry.symlink_status())) {
            files.push_back(std::filesystem::relative(entry.path(), folder));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

inline std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + " cannot be read.");
    }
    return {std::istreambuf_iterator<char>(file), {}};
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
    const std::string begin = "." + file.filename().string() + ".";
    for (const RemoteEntry& entry : entries) {
        const bool isOurs = entry.name.rfind(begin, 0) == 0 && std::filesystem::path(entry.name).extension() == ".part";
        if (result == 0 && isOurs) {
            request.remoteFileName = entry.name;
            result = session.DelSFtpFile(request, errorText);
        }
    }
    return result;
}

#endif
