#ifndef SFTPCLIENT_TRANSFER_WIPESTRING_H
#define SFTPCLIENT_TRANSFER_WIPESTRING_H

#include <string>

/// Overwrites every character of `text` with a zero byte, three times over, then empties it.
static inline void sftpWipeString(std::string& text)
{
    constexpr int kPasses = 3;
    // Volatile: the compiler may not drop stores to a string that nobody reads again.
    volatile char* const characters = text.data();
    for (int pass = 0; pass < kPasses; ++pass) {
        for (std::string::size_type i = 0; i < text.size(); ++i) {
            characters[i] = '\0';
        }
    }
    text.clear();
}

#endif
