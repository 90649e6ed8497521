#include "credentials/Password.h"

#include "base/InputFile.h"
#include "base/ThrowErrno.h"
#include "base/UsageError.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace {

constexpr int kForGood = -1;

[[noreturn]] void throwTooLong(const std::string& source)
{
    throw UsageError("The password" + source + " must not be longer than " + std::to_string(kLongestPassword) +
                     " bytes.");
}

// Whether one of them can be read. poll ignores the descriptor -1.
bool waitForInput(std::array<pollfd, 2>& waits, int milliseconds)
{
    int ready = -1;
    while ((ready = poll(waits.data(), waits.size(), milliseconds)) < 0) {
        if (errno != EINTR) {
            throwErrno("waiting for the password failed");
        }
    }
    return ready > 0;
}

// False at an end of file before any byte, and when `interruption` can be read first.
bool readLine(int descriptor, int interruption, int milliseconds, const std::string& source, std::string& line)
{
    // A text that grew would leave the password behind in the block it outgrew. One more byte, for the CR.
    line.clear();
    line.reserve(kLongestPassword + 1);
    char byte = '\0';
    for (;;) {
        std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {interruption, POLLIN, 0}}};
        const bool isReady = waitForInput(waits, milliseconds);
        if (waits[1].revents != 0) {
            return false;
        }
        const ssize_t count = isReady ? read(descriptor, &byte, 1) : 0;
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
            throwTooLong(source);
        }
        line.append(1, byte);
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    if (line.size() > kLongestPassword) {
        throwTooLong(source);
    }
    return true;
}

} // namespace

bool readSecretLine(int descriptor, int interruption, std::string& line)
{
    return readLine(descriptor, interruption, kForGood, "", line);
}

void readPasswordFile(const std::string& file, std::string& password, std::chrono::milliseconds patience)
{
    const InputFile input(file);
    if (!input.isOpen()) {
        throw UsageError("The password file " + file + " cannot be read (" + input.whyNotOpen() +
                         "): name one that can be.");
    }
    input.warnOfOtherReaders("the password file");
    if (!readLine(input.descriptor(), -1, static_cast<int>(patience.count()), " in " + file, password)) {
        throw UsageError("The password file " + file + " is empty: write the password into its first line.");
    }
}

void readPasswordFromInput(std::string& password)
{
    if (!readSecretLine(STDIN_FILENO, -1, password)) {
        throw UsageError("Standard input is empty: write the password to it, or leave --password-stdin out.");
    }
}
