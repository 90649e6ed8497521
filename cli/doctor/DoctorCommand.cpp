#include "doctor/DoctorCommand.h"

#include "base/RequestOf.h"
#include "base/UsageError.h"
#include "base/WipedAtEnd.h"
#include "credentials/Login.h"
#include "doctor/Examination.h"
#include "doctor/Renderers.h"
#include "doctor/RoundTrip.h"
#include "operation/Interruption.h"
#include "operation/SessionOptionsOf.h"
#include "output/Progress.h"

#include <CurlProcess.h>
#include <EscapeControlBytes.h>

#include <unistd.h>

#include <iostream>
#include <stdexcept>

namespace {

using namespace doctor;

// Empty where the library would find another directory by it.
std::string commandUrlOf(const Arguments& arguments)
{
    try {
        return arguments.remote.forDirectoryCommand(arguments.port);
    } catch (const UsageError&) {
        return {};
    }
}

Question questionOf(const Arguments& arguments)
{
    Question question;
    question.request = requestOf(arguments);
    question.commandUrl = commandUrlOf(arguments);
    question.clearLogin = arguments.clearLogin;
    question.knownHostsFile = knownHostsOf(arguments);
    question.hostKeySha256 = arguments.fingerprint;
    question.limit = arguments.timeout;
    question.fileName = arguments.writes ? uniqueName() : "";
    if (arguments.writes && arguments.remote.scheme() == "ftp" && !arguments.clearLogin) {
        throw UsageError("With an ftp: URL, --write sends the password in the clear, because the library's upload "
                         "does: add --clear-login to agree, or use an ftps: URL.");
    }
    return question;
}

Proxy proxyFor(const Arguments& arguments, const ProxyEnvironment& proxies)
{
    const std::string variable = proxies.variableFor(arguments.remote.text());
    return {variable, !variable.empty() && arguments.remote.scheme() == "ftp" && proxies.isHttp(variable)};
}

// Somebody who interrupts a trial still has to know what is left of it.
void nameWhatIsLeft(const RoundTrip& roundTrip)
{
    for (const std::string& file : roundTrip.leftBehind) {
        std::cerr << "sftpclient: left behind: " << escapeControlBytes(file) << "\n";
    }
    if (roundTrip.leftUnknown) {
        std::cerr << "sftpclient: perhaps left behind: " << whatMayBeLeft(roundTrip) << "\n";
    }
}

void render(const Report& report, const std::vector<Prediction>& predictions, bool asJson)
{
    if (asJson) {
        renderJson(report, predictions, std::cout);
    } else {
        renderTable(report, predictions, isatty(STDOUT_FILENO) == 1, std::cout);
    }
    if (!std::cout.flush()) {
        throw std::runtime_error("the report cannot be written to standard output");
    }
}

} // namespace

int runDoctor(const Arguments& arguments, const ProxyEnvironment& proxies)
{
    Question question = questionOf(arguments);
    const WipedAtEnd wiped(question.request.password);
    readLogin(arguments, question.request);

    const CurlProcess curl;
    question.proxy = proxyFor(arguments, proxies);
    LiveLine line(std::cerr);
    if (isatty(STDERR_FILENO) == 1) {
        question.tell = [&line](const std::string& probe) { line.show("doctor: " + probe + " ..."); };
    }
    const Report report = examine(question);
    line.clear();
    const std::vector<Prediction> predictions = predict(report);
    // Before the report, whose reader may have ended by the same Ctrl-C.
    if (report.signal != 0 && report.roundTrip) {
        nameWhatIsLeft(*report.roundTrip);
    }
    render(report, predictions, arguments.json);
    if (report.signal != 0) {
        endBySignal(report.signal);
    }
    return exitStatusOf(predictions);
}
