#ifndef SFTPCLIENT_CLI_CREDENTIALS_TERMINALPROMPT_H
#define SFTPCLIENT_CLI_CREDENTIALS_TERMINALPROMPT_H

#include <string>

/// Asks at the controlling terminal for the password of `user`, which is not shown as it is typed. The terminal is as
/// before on every way out: a signal that ends the process meanwhile takes effect after that. Throws `UsageError` when
/// there is no terminal or nothing was typed.
/// REQUIRES: one thread alone, for the signals.
void promptForPassword(const std::string& user, std::string& password);

#endif
