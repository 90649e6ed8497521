#ifndef SFTPCLIENT_CLI_CREDENTIALS_LOGIN_H
#define SFTPCLIENT_CLI_CREDENTIALS_LOGIN_H

#include "base/Arguments.h"

#include <SFtpRequest.h>

/// Fills in the request's user and password. The user is the one of `arguments`, or else that of the netrc file's entry
/// for the URL's host. The password is the first that there is: the password file's or standard input's, the
/// environment variable SFTPCLIENT_PASSWORD, the netrc file's, what the user types at the terminal. No other copy of
/// it is left behind. Throws `UsageError` when there is no login, or one that the server's commands cannot hold.
void readLogin(const Arguments& arguments, SFtpRequest& request);

#endif
