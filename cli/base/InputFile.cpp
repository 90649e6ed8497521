#include "base/InputFile.h"

#include "base/UsageError.h"

#include <EscapeControlBytes.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

namespace {

constexpr std::string::size_type kKibi = 1024;
constexpr std::string::size_type kLargestContents = kKibi * kKibi;

bool hasInput(int descriptor, std::chrono::milliseconds patience)
{
    pollfd wait{descriptor, POLLIN, 0};
    return poll(&wait, 1, static_cast<int>(patience.count())) != 0;
}

} // namespace

InputFile::InputFile(const std::string& path)
    : m_path(path), m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)),
      m_error(m_descriptor.isOpen() ? 0 : errno)
{
}

std::string InputFile::whyNotOpen() const { return std::strerror(m_error); }

std::string InputFile::readWhole(std::string::size_type largest, std::string& text,
                                 std::chrono::milliseconds patience) const
{
    if (!isOpen()) {
        return whyNotOpen();
    }
    text.resize(largest + 1);
    std::string::size_type size = 0;
    while (size < text.size()) {
        if (!hasInput(descriptor(), patience)) {
            return "nothing came for " + std::to_string(patience.count() / 1000) + " s";
        }
        const ssize_t count = read(descriptor(), &text[size], text.size() - size);
        if (count == 0) {
            text.resize(size);
            return {};
        }
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            return std::strerror(errno);
        }
        size += count > 0 ? static_cast<std::string::size_type>(count) : 0;
    }
    return "it is larger than " + std::to_string(largest / kKibi) + " KiB";
}

void InputFile::warnOfOtherReaders(const std::string& what) const
{
    struct stat status = {};
    const bool isFile = isOpen() && fstat(descriptor(), &status) == 0 && S_ISREG(status.st_mode);
    if (isFile && (status.st_mode & (S_IRGRP | S_IROTH)) != 0) {
        const std::string shown = escapeControlBytes(m_path);
        std::cerr << "sftpclient: warning: others than its owner can read " << what << " " << shown
                  << "; run: chmod 600 " << shown << "\n";
    }
}

std::string contentsOf(const std::string& file, const std::string& what, const std::string& remedy)
{
    std::string bytes;
    std::string reason = InputFile(file).readWhole(kLargestContents, bytes);
    if (reason.empty() && bytes.empty()) {
        reason = "it is empty";
    }
    if (!reason.empty()) {
        throw UsageError(what + " " + file + " cannot be read (" + reason + "): " + remedy);
    }
    return bytes;
}
