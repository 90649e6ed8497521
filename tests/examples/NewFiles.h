#ifndef EXAMPLES_NEWFILES_H
#define EXAMPLES_NEWFILES_H

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

/// Waits for files to be made in a folder.
class NewFiles
{
public:
    explicit NewFiles(const std::string& folder) : m_watch(inotify_init1(IN_CLOEXEC))
    {
        if (inotify_add_watch(m_watch, folder.c_str(), IN_CREATE) < 0) {
            throw std::system_error(errno, std::generic_category(), folder);
        }
    }
    ~NewFiles() { close(m_watch); }
    NewFiles(const NewFiles&) = delete;
    NewFiles& operator=(const NewFiles&) = delete;

    void waitFor(int count) const
    {
        alignas(inotify_event) std::array<char, 4096> bytes = {};
        while (count > 0) {
            const ssize_t got = read(m_watch, bytes.data(), bytes.size());
            if (got <= 0) {
                throw std::system_error(errno, std::generic_category(), "inotify");
            }
            for (ssize_t at = 0; at < got; --count) {
                at += static_cast<ssize_t>(sizeof(inotify_event)) +
                      reinterpret_cast<const inotify_event*>(bytes.data() + at)->len;
            }
        }
    }

private:
    int m_watch;
};

#endif
