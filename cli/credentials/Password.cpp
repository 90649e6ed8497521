#include "credentials/Password.h"

#include "Descriptor.h"
#include "UsageError.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

enum class Readiness
{
    Input,
    Interrupted
};

[[noreturn]] void throwErrno(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

[[noreturn]] void throwTooLong()
{
    throw UsageError("The password must not be longer than " + std::to_string(kLongestPassword) + " bytes.");
}

Readiness waitForInput(int descriptor, int interruption)
{
    // poll ignores the descriptor -1.
    pollfd waits[] = {{descriptor, POLLIN, 0}, {interruption, POLLIN, 0}};
    while (poll(waits, 2, -1) < 0) {
        if (errno != EINTR) {
            throwErrno("waiting for the password failed");
        }
    }
    return waits[1].revents != 0 ? Readiness::Interrupted : Readiness::Input;
}

} // namespace

WipedAtEnd::~WipedAtEnd() { explicit_bzero(m_text.data(), m_text.size()); }

bool readSecretLine(int descriptor, int interruption, std::string& line)
{
    // A text that grew would leave the password behind in the block it outgrew. One more byte, for the CR.
    line.clear();
    line.reserve(kLongestPassword + 1);
    char byte = '\0';
    for (;;) {
        if (waitForInput(descriptor, interruption) == Readiness::Interrupted) {
            return false;
        }
        const ssize_t count = read(descriptor, &byte, 1);
        if (count < 0) {
            throwErrno("reading the password failed");
        }
        if (count == 0 && line.empty()) {
            return false;
        }
        if (count == 0 || byte == '\n') {
            break;
        }
        if (line.size() > kLongestPassword) {
            throwTooLong();
        }
        line.append(1, byte);
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    if (line.size() > kLongestPassword) {
        throwTooLong();
    }
    return true;
}

void readPasswordFile(const std::string& file, std::string& password)
{
    const Descriptor opened(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened.isOpen()) {
        throw UsageError("The password file " + file + " cannot be read (" + std::strerror(errno) +
                         "): name one that can be.");
    }
    if (!readSecretLine(opened.get(), -1, password)) {
        throw UsageError("The password file " + file + " is empty: write the password into its first line.");
    }
}

void readPasswordFromInput(std::string& password)
{
    if (!readSecretLine(STDIN_FILENO, -1, password)) {
        throw UsageError("Standard input is empty: write the password to it, or leave --password-stdin out.");
    }
}
