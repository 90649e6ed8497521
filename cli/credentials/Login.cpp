#include "credentials/Login.h"

#include "base/Checks.h"
#include "base/UsageError.h"
#include "base/WipedAtEnd.h"
#include "credentials/Netrc.h"
#include "credentials/Password.h"
#include "credentials/TerminalPrompt.h"

#include <cstdlib>

namespace {

std::string netrcFileOf(const Arguments& arguments)
{
    if (!arguments.netrcFile.empty()) {
        return arguments.netrcFile;
    }
    return arguments.netrc ? usualNetrcFile() : std::string();
}

// True when a password was found.
bool readGivenPassword(const Arguments& arguments, std::string& password)
{
    const char* const fromEnvironment = secure_getenv("SFTPCLIENT_PASSWORD");
    if (!arguments.passwordFile.empty() && arguments.passwordFromInput) {
        throw UsageError("The password can come from --password-file or from --password-stdin: leave one of them out.");
    }
    if (!arguments.passwordFile.empty()) {
        readPasswordFile(arguments.passwordFile, password);
        return true;
    }
    if (arguments.passwordFromInput) {
        readPasswordFromInput(password);
        return true;
    }
    if (fromEnvironment != nullptr && *fromEnvironment != '\0') {
        password = fromEnvironment;
        return true;
    }
    return false;
}

void checkUser(const std::string& user, const std::string& netrcFile)
{
    if (user.empty()) {
        throw UsageError(netrcFile.empty()
                             ? "There is no user: write it into the URL (ftps://user@host/), or give --user NAME."
                             : "There is no user: " + netrcFile + " has none for this host; give --user NAME.");
    }
    refuseControlBytes("The user", user);
    // The library joins user and password with a ":", and libcurl takes the first one for that.
    if (user.find(':') != std::string::npos) {
        throw UsageError("The user must not hold a \":\".");
    }
}

} // namespace

void readLogin(const Arguments& arguments, SFtpRequest& request)
{
    request.userName = arguments.user;
    const std::string netrcFile = netrcFileOf(arguments);
    bool known = readGivenPassword(arguments, request.password);
    if (!netrcFile.empty() && (!known || request.userName.empty())) {
        std::string password;
        const WipedAtEnd wiped(password);
        const bool found = readNetrc(netrcFile, arguments.remote.host(), request.userName, password);
        if (!known && found) {
            request.password.swap(password);
            known = true;
        }
    }
    checkUser(request.userName, netrcFile);
    if (!known) {
        promptForPassword(request.userName, request.password);
    }
    refuseControlBytes("The password", request.password);
}
