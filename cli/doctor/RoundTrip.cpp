#include "doctor/RoundTrip.h"

#include "base/ServerReplies.h"
#include "doctor/Predictions.h"
#include "doctor/probes/Probes.h"

#include <SFtpSession.h>

#include <sstream>

namespace doctor {

namespace {

// Two TLS records and a bit.
constexpr std::size_t kBytes = 33333;

std::string contentFor(const std::string& name)
{
    std::string content;
    while (content.size() < kBytes) {
        content += name + "\r\n";
    }
    return content;
}

/// Makes the steps of a trip one after the other, until one takes too long.
class Steps
{
public:
    Steps(const Access& access, RoundTrip& trip, const Save& save) : m_access(access), m_trip(trip), m_save(save) {}

    void make(Step step, const std::function<StepResult()>& operation)
    {
        if (!m_trip.failure.empty()) {
            return;
        }
        m_trip.unfinished = step;
        m_save();
        const StepResult tried = operation();
        if (tried.code == CURLE_OPERATION_TIMEDOUT && tried.said.code != 421) {
            const auto time = ControlConnection::kWaits * m_access.limit;
            m_trip.failure = "did not finish within " +
                             std::to_string(std::chrono::ceil<std::chrono::seconds>(time).count()) + " seconds";
            return;
        }
        m_trip.unfinished.reset();
        m_trip[step] = tried;
    }

private:
    const Access& m_access;
    RoundTrip& m_trip;
    const Save& m_save;
};

/// The library's operations over a connection that is kept.
class Commands
{
public:
    Commands(const Access& access, ControlConnection& connection, const std::string& name)
        : m_access(access), m_connection(connection), m_name(name)
    {
        connection.waitLonger();
    }

    StepResult put()
    {
        Transfer transfer{url(), Transfer::What::Upload};
        transfer.content = contentFor(m_name);
        if (m_access.scheme != Scheme::Sftp) {
            transfer.afterListing = {"SIZE " + m_name};
        }
        return run(transfer);
    }
    StepResult list()
    {
        StepResult tried = run({m_access.request.remotePath, Transfer::What::Names});
        tried.isGood = m_result.names.holds(m_name);
        return tried;
    }
    StepResult get()
    {
        StepResult tried = run({url(), Transfer::What::Download});
        tried.isGood = m_result.names.bytes() == contentFor(m_name);
        return tried;
    }
    StepResult command(const std::string& text)
    {
        Transfer transfer{m_access.request.remotePath, Transfer::What::Nothing};
        transfer.afterListing = {text};
        transfer.areRequired = m_access.scheme == Scheme::Sftp;
        StepResult tried = run(transfer);
        const Reply* const reply = m_result.replyTo(text);
        if (!transfer.areRequired && tried.code == CURLE_OK && (reply == nullptr || reply->code / 100 != 2)) {
            tried.code = CURLE_QUOTE_ERROR;
            tried.said = reply == nullptr ? Reply{} : *reply;
        }
        return tried;
    }

    const ProbeResult& result() const { return m_result; }

private:
    std::string url() const { return m_access.request.remotePath + m_name; }

    StepResult run(const Transfer& transfer)
    {
        m_result = m_connection.run(transfer);
        if (!m_result.made) {
            m_connection.mayReconnect();
            m_result = m_connection.run(transfer);
        }
        StepResult tried;
        tried.code = asReported(m_result.code);
        const Reply* const last = m_result.lastReply();
        if (tried.code != CURLE_OK && last != nullptr && last->code >= 400) {
            tried.said = *last;
        }
        return tried;
    }

    const Access& m_access;
    ControlConnection& m_connection;
    const std::string m_name;
    ProbeResult m_result;
};

/// The same by a session.
class Operations
{
public:
    Operations(const Access& access, const Report& report, const std::string& name)
        : m_access(access), m_name(name), m_session(optionsFor(access, report))
    {
    }

    StepResult test() { return triedOf(m_session.TestSConnect(m_access.request, m_text)); }
    StepResult put()
    {
        const std::string content = contentFor(m_name);
        std::istringstream stream(content);
        return triedOf(m_session.UploadFrom(file(), stream, m_text, static_cast<std::int64_t>(content.size())));
    }
    StepResult list()
    {
        SFtpRequest request = m_access.request;
        request.localPath = "/dev/null";
        return triedOf(m_session.Listsftpdir(request, m_text));
    }
    StepResult get()
    {
        std::ostringstream content;
        StepResult tried = triedOf(m_session.DownLoadTo(file(), content, m_text));
        tried.isGood = content.str() == contentFor(m_name);
        return tried;
    }
    StepResult rename()
    {
        SFtpRequest request = named(m_name);
        request.localPath = renamed(m_name);
        return triedOf(m_session.ReNameSFtpFile(request, m_text));
    }
    StepResult remove(const std::string& name) { return triedOf(m_session.DelSFtpFile(named(name), m_text)); }

private:
    static SessionOptions optionsFor(const Access& access, const Report& report)
    {
        SessionOptions options;
        options.knownHostsFile = report.knownHostsFile;
        options.hostKeySha256 = report.hostKeySha256;
        options.callTimeout = ControlConnection::kWaits * access.limit;
        return options;
    }
    SFtpRequest file() const
    {
        SFtpRequest request = m_access.request;
        request.remotePath += m_name;
        return request;
    }
    SFtpRequest named(const std::string& name) const
    {
        SFtpRequest request = m_access.request;
        request.remoteFileName = name;
        return request;
    }

    // The server's last reply stands at the end of a session's text.
    StepResult triedOf(int code) const
    {
        StepResult tried;
        tried.code = code;
        std::string line(replyQuotedIn(m_text));
        if (code != CURLE_OK && codeQuotedIn(m_text) >= 400) {
            line.pop_back(); // the bracket
            tried.said = endsReply(line) ? replyOf(line, m_access.mask) : Reply{};
        }
        return tried;
    }

    const Access& m_access;
    const std::string m_name;
    SFtpSession m_session;
    std::string m_text;
};

} // namespace

void sendFile(const Access& access, ControlConnection& connection, RoundTrip& trip, const Save& save)
{
    trip.leftUnknown = true;
    Commands library(access, connection, trip.name);
    Steps(access, trip, save).make(Step::Put, [&library] { return library.put(); });
    const Reply* const size = library.result().replyTo("SIZE " + trip.name);
    if (trip[Step::Put].succeeded() && size != nullptr && size->ending == Ending::Complete && size->code != 213) {
        constexpr int kRefusedByTheLibrary = -1;
        trip[Step::Get] = {kRefusedByTheLibrary, *size};
    }
}

void makeTrip(const Access& access, Report& report, const Save& save)
{
    RoundTrip& trip = *report.roundTrip;
    ControlConnection connection(access, Manner::Client);
    if (isTurnedAway(connection.run({access.request.remotePath, Transfer::What::Nothing}), report)) {
        return;
    }
    Commands library(access, connection, trip.name);
    Steps steps(access, trip, save);
    if (access.scheme == Scheme::Sftp) {
        trip.leftUnknown = true;
        steps.make(Step::Put, [&library] { return library.put(); });
    }
    steps.make(Step::List, [&library] { return library.list(); });
    if (trip[Step::Put].succeeded() && !trip[Step::Get].code) {
        steps.make(Step::Get, [&library] { return library.get(); });
    }
    if (trip[Step::Put].succeeded() && !report.commandDirectory.empty()) {
        const std::string path = report.commandDirectory + trip.name;
        steps.make(Step::Rename, [&] { return library.command("rename " + path + " " + renamed(path)); });
        const std::string last = trip[Step::Rename].succeeded() ? renamed(path) : path;
        steps.make(Step::Remove, [&] { return library.command("rm " + last); });
    }
    save();
    cleanUpOver(connection, access, report);
}

void makeSessionTrip(const Access& access, Report& report, const Save& save)
{
    RoundTrip& trip = *report.sessionTrip;
    Operations session(access, report, trip.name);
    const StepResult test = session.test();
    if (test.said.code == 421) {
        report.turnedAway = test.said;
        return;
    }
    report.roundTrip->leftUnknown = true;
    Steps steps(access, trip, save);
    steps.make(Step::Put, [&session] { return session.put(); });
    steps.make(Step::List, [&session] { return session.list(); });
    if (trip[Step::Put].succeeded()) {
        steps.make(Step::Get, [&session] { return session.get(); });
        steps.make(Step::Rename, [&session] { return session.rename(); });
        const std::string last = trip[Step::Rename].succeeded() ? renamed(trip.name) : trip.name;
        steps.make(Step::Remove, [&session, &last] { return session.remove(last); });
    }
}

std::string renamed(const std::string& name) { return name + ".renamed"; }

// A session's upload has a temporary name, which begins with a dot.
std::string whatMayBeLeft(const RoundTrip& trip) { return "files whose names contain " + trip.name; }

const char* operationOf(Step step)
{
    constexpr std::array<const char*, 5> kOperations = {"upload", "list", "download", "rename", "delete"};
    return kOperations.at(static_cast<std::size_t>(step));
}

} // namespace doctor
