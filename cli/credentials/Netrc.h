#ifndef SFTPCLIENT_CLI_CREDENTIALS_NETRC_H
#define SFTPCLIENT_CLI_CREDENTIALS_NETRC_H

#include <string>

/// The user's own file: .netrc in the folder that HOME names. Throws `UsageError` without HOME.
std::string usualNetrcFile();

/// Looks into the netrc file `file` for the login at `host`: the first "machine" of that name, or "default", whose
/// "login" is `user`, or any where `user` is empty. Fills in what the entry has: the user where that was empty, and the
/// password. Whether there was a password. No other copy of a password is left behind.
/// A word in double quotes may hold blanks, and \" and \\ stand for these characters. Macros ("macdef") and lines that
/// begin with "#" are skipped.
/// Throws `UsageError`, naming the file, when it cannot be read or understood.
bool readNetrc(const std::string& file, const std::string& host, std::string& user, std::string& password);

#endif
