#include "doctor/ControlConnection.h"
#include "doctor/Diagnosis.h"
#include "doctor/probes/Probes.h"

namespace doctor {

namespace {

// The directory command gets what the library would send, but for names that no file has.
std::vector<std::string> commandsOf(const Report& report, const std::string& missing)
{
    std::vector<std::string> commands = {"TYPE I", "SIZE " + missing, "DELE " + missing};
    if (!report.commandDirectory.empty()) {
        const std::string path = report.commandDirectory + missing;
        commands.insert(commands.end(), {"rename " + path + " " + path + ".renamed", "rm " + path});
    }
    // The last, because it may begin something.
    commands.push_back("RNFR " + missing);
    return commands;
}

// A server that allows an address a single connection says so only while there is one.
void connectOnceMore(const Access& access, Manner manner, Report& report)
{
    ControlConnection second(access, manner);
    Transfer transfer{access.request.remotePath, Transfer::What::Nothing};
    transfer.lastCommand = access.scheme == Scheme::Ftp ? "AUTH" : "USER";
    const ProbeResult result = second.run(transfer);
    if (const Reply* const refusal = refusalToConnect(result, access.scheme)) {
        report.limit = *refusal;
    }
}

Login logIn(const Access& access, Manner manner, const std::string& missing, Report& report)
{
    Login login;
    ControlConnection connection(access, manner);
    const bool isSsh = access.scheme == Scheme::Sftp;
    login.test = connection.run({access.request.remotePath});
    if (isSsh && login.test.code == CURLE_REMOTE_ACCESS_DENIED) {
        connection.mayReconnect();
        login.missing = connection.run({access.request.remotePath + missing, Transfer::What::Nothing});
    }
    // Where the login fails once, it fails again; and a second wrong password can lock the user out.
    if (isSsh ? login.test.code != CURLE_OK : !login.test.loggedIn()) {
        return login;
    }
    if (!isSsh) {
        connectOnceMore(access, manner, report);
    }
    if (login.test.code == CURLE_REMOTE_ACCESS_DENIED) {
        login.root = connection.run({access.rootUrl(), Transfer::What::Names});
        login.commands =
            askAbout({"TYPE I", "SIZE " + missing, "DELE " + missing, "RNFR " + missing}, access.rootUrl(), connection);
        return login;
    }
    // libcurl does not ask again for a type that was refused, and would list without.
    if (login.test.code != CURLE_FTP_COULDNT_SET_TYPE) {
        login.listing = connection.run({access.request.remotePath, Transfer::What::Names});
    }
    if (!isSsh) {
        login.commands = askAbout(commandsOf(report, missing), access.request.remotePath, connection);
    }
    return login;
}

// A key of this machine, or its SSH agent, may have let `SFtpClient` in: a session has the password alone.
void logInByPassword(const Access& access, Report& report)
{
    const int code = report.client.test.code;
    const bool isIn = code == CURLE_OK || code == CURLE_REMOTE_FILE_NOT_FOUND || code == CURLE_REMOTE_ACCESS_DENIED;
    if (!isIn || !isHostKeyTrusted(report)) {
        return;
    }
    ControlConnection connection(access, Manner::Session);
    const ProbeResult login = connection.run({access.request.remotePath, Transfer::What::Nothing});
    if (login.code == CURLE_LOGIN_DENIED) {
        report.session.test = login;
    }
}

} // namespace

void probeLogin(const Access& access, const std::string& missing, Report& report)
{
    if (report.contact.code != CURLE_OK || isSilent(report) || isLoginWithheld(report)) {
        return;
    }
    report.client = logIn(access, Manner::Client, missing, report);
    if (isTurnedAway(report.client.test, report)) {
        return;
    }
    if (access.scheme == Scheme::Sftp) {
        logInByPassword(access, report);
    }
    // Nothing secret was sent, then.
    if (report.client.test.code == CURLE_PEER_FAILED_VERIFICATION && isTrustedBySession(report)) {
        report.session = logIn(access, Manner::Session, missing, report);
    }
    const auto& transcript = report.client.test.transcript;
    if (report.contact.greeting.ending == Ending::NotTried && !transcript.empty()) {
        report.contact.greeting = transcript.front().reply;
    }
}

} // namespace doctor
