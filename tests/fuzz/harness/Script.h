#ifndef FUZZ_HARNESS_SCRIPT_H
#define FUZZ_HARNESS_SCRIPT_H

#include <cstdint>
#include <string>
#include <vector>

constexpr std::uint16_t kControlPort = 2121;
constexpr std::uint16_t kDataPort = 2020;

/// What a server does, as text:
///
///     220 ready\r\n~*~*~550 no\r\n^first file^second file
///
/// Replies stand before the first "^", with a "~" between two of them. The first greets, and one more goes out whenever
/// the client has sent something, or has been silent for a while. If there are no more, the connection closes.
///
/// | in a reply | means |
/// |---|---|
/// | `*`, alone | what a good server without TLS would reply now; as the last one, from now on |
/// | `%`, alone | nothing for ten minutes, then the connection closes |
/// | `@`, `#` | the data connection's port, as a number and in the form of PASV |
/// | `!` at the end | not sent: TLS begins |
///
/// What follows a "^" goes over a data connection, which then closes: the first text over the first, and so on, the
/// last one over all others. A "!" at its beginning is not sent: TLS begins first.
struct Script
{
    explicit Script(const std::string& text);
    /// The text that gives this script.
    std::string text() const;

    std::vector<std::string> replies;  ///< with `@` and `#`
    std::vector<std::string> contents; ///< none: each data connection closes at once
};

/// A reply as it is sent: with ports in place of `@` and `#`.
std::string withPorts(std::string reply);

#endif
