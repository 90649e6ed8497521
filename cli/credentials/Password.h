#ifndef SFTPCLIENT_CLI_CREDENTIALS_PASSWORD_H
#define SFTPCLIENT_CLI_CREDENTIALS_PASSWORD_H

#include "base/InputFile.h"

#include <chrono>
#include <string>

/// The longest password that is taken, in bytes.
constexpr std::string::size_type kLongestPassword = 1023;

/// Each reads the password into `password` and leaves no other copy of it behind. Each throws `UsageError` when there
/// is none to read.

/// The first line of the file `file`, where a pipe may keep its reader waiting for `patience`. Warns on standard error
/// where others can read the file.
void readPasswordFile(const std::string& file, std::string& password,
                      std::chrono::milliseconds patience = InputFile::kPatience);

/// The first line of standard input.
void readPasswordFromInput(std::string& password);

/// Reads one line from `descriptor` into `line`, without its end (LF or CR LF). One byte at a time, so that no buffer
/// keeps a copy. False at an end of file before any byte, and when `interruption`, a descriptor or -1 for none, can be
/// read first. Throws `UsageError` for a longer line than a password, `std::system_error` when reading fails.
bool readSecretLine(int descriptor, int interruption, std::string& line);

#endif
